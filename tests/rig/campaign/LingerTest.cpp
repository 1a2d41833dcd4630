#include <csignal>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Until.h"

namespace {

/// Whether a DVR that DONE told to stay away does so.
using LingerTest = CampaignTest;

TEST_F(LingerTest, FindsACallThatTheHarnessDoesNotHear) {
    const Json one = RunCase("done-2.0", {"--dvr", Dvr("--defect reconnect"), "--linger", "20"});
    EXPECT_EQ(result_.status, 1) << result_.output;
    EXPECT_EQ(one["outcome"], "FAIL");
    ExpectHolds(one["reason"], "the DVR called again before the time that DONE gave it was over (after ");
    EXPECT_EQ(one["over"], "done");
    EXPECT_LT(one["times"]["duration"], 19) << "it has seen enough";
}

TEST_F(LingerTest, HasTheLogShowACallThatTheHarnessHears) {
    const Json one = RunCase("close-done-2.0", {"--dvr", Dvr("--defect reconnect")});
    EXPECT_EQ(one["outcome"], "FAIL");
    ExpectHolds(one["reason"], "duration.answer: ");
    EXPECT_LT(one["times"]["duration"], 50);
}

TEST_F(LingerTest, TakesAsLongAsTheDurationUnlessToldOtherwise) {
    const std::string log = out_ + "/cases/done-2.0/harness.log";
    ProgramSurroundings surroundings;
    surroundings.started = [&log](pid_t campaign) {
        EXPECT_TRUE(
            Until([&] { return FileExists(log) && ReadFile(log).find("DONE") != std::string::npos; }));
        kill(campaign, SIGINT);
    };
    const ProgramResult result = RunCampaign({"--bare", "--cases", "done-2.0", "--dvr", Dvr()}, surroundings);
    EXPECT_EQ(result.status, 130) << result.output;
    ExpectHolds(result.output, "1 case watches for 60 s after DONE whether the DVR stays away");
    ExpectHolds(result.output, "watching whether the DVR stays away, 6");
    EXPECT_EQ(Evidence()["cases"][0]["outcome"], "INTERRUPTED");
}

TEST_F(LingerTest, IsShortenedOnRequest) {
    const Json one = RunCase("done-2.0", {"--dvr", Dvr(), "--linger", "0.5"});
    EXPECT_LT(one["times"]["duration"], 20);
    EXPECT_EQ(Evidence()["options"]["linger"], 0.5);
    EXPECT_EQ(result_.output.find("for 60 s after DONE"), std::string::npos) << result_.output;
}

}  // namespace
