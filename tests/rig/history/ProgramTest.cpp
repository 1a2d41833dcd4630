#include <gtest/gtest.h>

#include "tests/rig/campaign/CampaignTest.h"

namespace {

class HistoryProgram : public CampaignTest {
 protected:
    /// Runs a campaign of one clean export into the folder, with a DVR that has these options.
    void RunCampaignInto(const std::string& folder, const std::string& options) {
        out_ = folder;
        RunCase("clean-2.0", {"--note", folder, "--dvr", Dvr(options)});
    }
};

TEST_F(HistoryProgram, SaysSinceWhenACheckFails) {
    RunCampaignInto("/mnt/1.8", "");
    RunCampaignInto("/mnt/1.9", "--defect missing-source --on EVENT_LIST");
    RunCampaignInto("/mnt/1.10", "--defect missing-source --on EVENT_LIST");

    out_ = "/mnt";
    const ProgramResult shown = RunRig({"history", "--order", "note", "/mnt/1.10", "/mnt/1.9", "/mnt/1.8",
                                        "--json", "/mnt/history.json", "--html", "/mnt/history.html"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(shown.errors, "");
    ExpectHolds(shown.output, "\nclean-2.0  PFF\n");
    ExpectHolds(shown.output,
                "    since 2, /mnt/1.9; last passed in 1, /mnt/1.8\n    see /mnt/1.10/cases/clean-2.0\n");

    const Json failure = Evidence("history.json").at("failures").at(0);
    EXPECT_EQ(failure.at("check"), "event-list.source");
    EXPECT_EQ(failure.at("since"), 2);
    EXPECT_EQ(failure.at("lastPassed"), 1);
    const std::string target = "1.10/cases/clean-2.0/report.html";
    ExpectHolds(EvidenceText("history.html"), "href=\"" + target + "#event-list.source\"");
    ExpectHolds(EvidenceText(target), "id=\"event-list.source\"");
}

}  // namespace
