#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

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
    ExpectHolds(one["reason"], "duration.answer: the DVR connected again before the time was over (after ");
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
        poll(nullptr, 0, 500);  // until the campaign knows that this is the end
        kill(campaign, SIGINT);
    };
    const ProgramResult result = RunCampaign({"--bare", "--cases", "done-2.0", "--dvr", Dvr()}, surroundings);
    EXPECT_EQ(result.status, 130) << result.output;
    ExpectHolds(result.output, "1 case watches after DONE whether the DVR stays away, which takes 60 s");
    ExpectHolds(result.output, "watching whether the DVR stays away, 6");
    EXPECT_EQ(Evidence()["cases"][0]["outcome"], "INTERRUPTED");
}

TEST_F(LingerTest, IsShortenedOnRequest) {
    const Json one = RunCase("done-2.0", {"--dvr", Dvr(), "--linger", "0.5"});
    EXPECT_LT(one["times"]["duration"], 20);
    EXPECT_EQ(one["outcome"], "INCONCLUSIVE");
    ExpectHolds(one["reason"], "duration.answer: ");
    EXPECT_EQ(Evidence()["options"]["linger"], 0.5);
    EXPECT_EQ(result_.output.find("which takes 60 s"), std::string::npos) << result_.output;
}

TEST_F(LingerTest, IsNotNeededWhereTheNextCaseTells) {
    const std::string call = RigCommand().Line() + " dvr --protocol 2 --recordings /mnt/recordings";
    const std::string calls = "while :; do " + call + "; done >/dev/null 2>&1";
    const pid_t recorder = fork();
    if (recorder == 0) {
        setpgid(0, 0);
        execl("/bin/sh", "sh", "-c", calls.c_str(), nullptr);
        _exit(127);
    }
    setpgid(recorder, recorder);
    const ProgramResult result = RunCampaign({"--bare", "--cases", "done-2.0,recovery-2.0", "--linger", "0"});
    kill(-recorder, SIGKILL);
    waitpid(recorder, nullptr, 0);
    EXPECT_EQ(result.status, 1) << result.output;
    const Json cases = Evidence()["cases"];
    EXPECT_EQ(cases[0]["outcome"], "FAIL");
    ExpectHolds(cases[0]["reason"],
                "duration.answer: the DVR connected again before the time was over (after ");
    EXPECT_EQ(cases[0],
              Evidence("cases/done-2.0/case.json").patch(R"([{"op": "remove", "path": "/format"}])"_json));
    ExpectHolds(EvidenceText("cases/done-2.0/report.html"), "the DVR connected again");
    ExpectHolds(EvidenceText("junit.xml"), "the DVR connected again");
    ExpectHolds(result.output, "done-2.0 after all: FAIL");
    EXPECT_EQ(cases[1]["outcome"], "PASS") << cases[1]["reason"];
}

}  // namespace
