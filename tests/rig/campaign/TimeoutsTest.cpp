#include "tests/rig/campaign/CampaignTest.h"

namespace {

using TimeoutsTest = CampaignTest;

TEST_F(TimeoutsTest, EndACaseWithoutADvr) {
    const Json one = RunCase("clean-2.0", {"--dvr", "tail -f /dev/null", "--connect-timeout", "8"});
    EXPECT_EQ(result_.status, 1);
    EXPECT_EQ(one["outcome"], "TIMEOUT");
    ExpectHolds(one["reason"], "connect time-out: no DVR connected within 8 s; the judge says ");
    EXPECT_EQ(one["harness"]["status"], 44);
    EXPECT_EQ(one["dvr"]["stoppedBy"], "SIGTERM");
}

TEST_F(TimeoutsTest, AreCountedDownWhileWaitingForARecorder) {
    const Json one = RunCase("clean-2.0", {"--connect-timeout", "8"});
    EXPECT_EQ(one["outcome"], "TIMEOUT");
    EXPECT_TRUE(one["dvr"].is_null());
    ExpectHolds(result_.output, "waiting for the DVR to connect to port 5001, ");
    ExpectHolds(result_.output, " s left\n");
}

TEST_F(TimeoutsTest, EndACaseWhoseDvrFallsSilent) {
    const Json one = RunCase("clean-2.0", {"--dvr", Dvr("--defect silence --on EVENT"), "--transfer-timeout",
                                           "0.7", "--patience", "0.5"});
    EXPECT_EQ(result_.status, 1);
    EXPECT_EQ(one["outcome"], "TIMEOUT");
    ExpectHolds(one["reason"],
                "transfer time-out: no new line in the log for 0.7 s after a request for a file; the judge "
                "says FAIL");
    EXPECT_EQ(one["verdict"], "FAIL");
    ExpectHolds(EvidenceText("junit.xml"), "transfer time-out");
    EXPECT_GE(one["times"]["dvr"], 0.7) << "the silence is the DVR's";
}

TEST_F(TimeoutsTest, AreLongerForATransfer) {
    std::string dvr = Dvr();
    dvr.replace(dvr.find("time 100"), 8, "time 1500");
    const Json one = RunCase("clean-2.0", {"--dvr", dvr, "--idle-timeout", "0.8"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(Evidence()["options"]["transferTimeout"], 120.0);
}

TEST_F(TimeoutsTest, EndACaseWhoseDvrDoesNotGoOnOtherwise) {
    const Json one = RunCase("clean-2.0", {"--dvr", Dvr("--defect no-answer --on EVENT"), "--idle-timeout",
                                           "0.7", "--patience", "0.5"});
    EXPECT_EQ(one["outcome"], "TIMEOUT");
    ExpectHolds(one["reason"], "idle time-out: no new line in the log for 0.7 s; the judge says FAIL");
}

}  // namespace
