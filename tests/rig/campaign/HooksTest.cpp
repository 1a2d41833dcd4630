#include "tests/rig/campaign/CampaignTest.h"

namespace {

using HooksTest = CampaignTest;

TEST_F(HooksTest, RunAroundTheCaseAndSeeIt) {
    const std::string print = "echo $VELLORAN_CASE $VELLORAN_CASE_DIR $VELLORAN_OUTCOME";
    const Json one = RunCase("config-2.0", {"--dvr", Dvr(), "--before-case", print, "--after-case", print,
                                            "--alive", "exit 0", "--power-cycle", "exit 1"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(EvidenceText("cases/config-2.0/hooks.log"),
              "config-2.0 /mnt/campaign/cases/config-2.0\n"
              "config-2.0 /mnt/campaign/cases/config-2.0 PASS\n");
    ASSERT_EQ(one["hooks"].size(), 3U);
    EXPECT_EQ(one["hooks"][0]["hook"], "before-case");
    EXPECT_EQ(one["hooks"][2]["hook"], "alive");
    EXPECT_EQ(one["hooks"][2]["status"], 0);
}

TEST_F(HooksTest, ThatFailBeforeACaseKeepItFromRunning) {
    const Json one = RunCase("config-2.0", {"--dvr", Dvr(), "--before-case", "exit 5"});
    EXPECT_EQ(result_.status, 3);
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    EXPECT_EQ(one["reason"], "--before-case \"exit 5\" ended with status 5");
    EXPECT_EQ(one["attempts"], 0);
    ExpectHolds(result_.errors, "config-2.0: ENVIRONMENT, --before-case \"exit 5\" ended with status 5");
    EXPECT_TRUE(FileExists(out_ + "/cases/config-2.0/report.html"));
}

TEST_F(HooksTest, ThatFailAfterACaseEndItAsEnvironment) {
    const Json one = RunCase("config-2.0", {"--dvr", Dvr(), "--after-case", "exit 5"});
    EXPECT_EQ(result_.status, 3);
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    EXPECT_EQ(one["reason"], "--after-case \"exit 5\" ended with status 5; the case itself: PASS");
    EXPECT_EQ(one["verdict"], "PASS");
}

TEST_F(HooksTest, ThatTakeTooLongFail) {
    const Json one = RunCase("config-2.0", {"--before-case", "tail -f /dev/null", "--hook-timeout", "0.2"});
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    ExpectHolds(one["reason"], "did not end within 0.2 s");
}

TEST_F(HooksTest, FindADvrThatDidNotSurvive) {
    const Json one = RunCase(
        "config-2.0", {"--dvr", Dvr(), "--alive", "test -e /mnt/alive", "--power-cycle", "touch /mnt/alive"});
    EXPECT_EQ(result_.status, 1);
    EXPECT_EQ(one["outcome"], "FAIL");
    ExpectHolds(one["reason"], "the DVR did not survive the case");
    ASSERT_EQ(one["hooks"].size(), 3U) << "alive, power-cycle, alive";
}

TEST_F(HooksTest, FindADvrThatStaysDead) {
    const Json one = RunCase("config-2.0", {"--dvr", Dvr(), "--alive", "exit 1", "--power-cycle", "exit 0"});
    EXPECT_EQ(result_.status, 3);
    EXPECT_EQ(one["outcome"], "ENVIRONMENT");
    ExpectHolds(one["reason"], "--alive \"exit 1\" ended with status 1");
    EXPECT_EQ(one["hooks"].size(), 3U);
}

}  // namespace
