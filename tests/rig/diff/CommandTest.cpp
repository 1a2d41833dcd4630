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

    const ProgramResult worse =
        RunRig({"diff", "/mnt/old", "/mnt/new", "--html", "/mnt/new/diff.html", "--json", "/mnt/diff.json"});
    EXPECT_EQ(worse.status, 1);
    EXPECT_EQ(worse.errors, "");
    ExpectHolds(worse.output,
                "    worse     check event-list.source\n"
                "              before: PASS: nothing else\n"
                "              now:    FAIL: EVENT_LIST without source\n");
    ExpectHolds(worse.output, "\n1 case worse, 0 better, 0 changed, 0 the same\n");
    EXPECT_EQ(Json::parse(ReadFile("/mnt/diff.json"))["counts"]["worse"], 1);
    ExpectHolds(ReadFile("/mnt/new/diff.html"), "href=\"cases/clean-2.0/report.html\"");
    ExpectHolds(ReadFile("/mnt/new/diff.html"), "href=\"../old/cases/clean-2.0/report.html\"");

    const ProgramResult better = RunRig({"diff", "/mnt/new", "/mnt/old"});
    EXPECT_EQ(better.status, 0);
    ExpectHolds(better.output, "    better    check event-list.source\n");
    ExpectHolds(better.output, "\n0 cases worse, 1 better, 0 changed, 0 the same\n");

    const ProgramResult same = RunRig({"diff", "/mnt/new", "/mnt/new"});
    EXPECT_EQ(same.status, 0);
    ExpectHolds(same.output, "\n0 cases worse, 0 better, 0 changed, 1 the same\n");

    const ProgramResult unwritten =
        RunRig({"diff", "/mnt/new", "/mnt/new", "--json", "/mnt/nowhere/diff.json"});
    EXPECT_EQ(unwritten.status, 64);
    EXPECT_EQ(CountLines(unwritten.errors), 1U) << unwritten.errors;
    ExpectHolds(unwritten.errors, "/mnt/nowhere/diff.json");
}

TEST(DiffUsage, RefusesAFolderThatIsNotACampaign) {
    const ProgramResult result = RunRig({"diff", "/nowhere", "/nowhere"});
    EXPECT_EQ(result.status, 66);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(
        result.errors,
        "velloran-rig diff: /nowhere/campaign.json: expected the record of a campaign (format 1), found No "
        "such file or directory\n");
}

}  // namespace
