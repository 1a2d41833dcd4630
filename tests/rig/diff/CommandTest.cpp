#include <gtest/gtest.h>

#include "tests/rig/campaign/CampaignTest.h"

namespace {

class DiffCommand : public CampaignTest {
 protected:
    /// Runs a campaign of one clean export into the folder, with a DVR that has these options.
    void RunCampaignInto(const std::string& folder, const std::string& options) {
        out_ = folder;
        RunCase("clean-2.0", {"--dvr", Dvr(options)});
    }
};

TEST_F(DiffCommand, NamesTheCheckThatGotWorseAndTheOneThatGotBetter) {
    RunCampaignInto("/mnt/old", "");
    RunCampaignInto("/mnt/new", "--defect missing-source --on EVENT_LIST");

    const ProgramResult worse = RunRig({"diff", "/mnt/old", "/mnt/new"});
    EXPECT_EQ(worse.status, 1);
    EXPECT_EQ(worse.errors, "");
    ExpectHolds(worse.output,
                "    worse     check event-list.source\n"
                "              before: PASS: nothing else\n"
                "              now:    FAIL: EVENT_LIST without source (<msg ");
    ExpectHolds(worse.output, "\n1 case worse, 0 better, 0 changed, 0 the same\n");

    // Its status is left open: reaction times drift on a busy machine.
    const ProgramResult better = RunRig({"diff", "/mnt/new", "/mnt/old"});
    ExpectHolds(better.output, "    better    check event-list.source\n");
}

}  // namespace
