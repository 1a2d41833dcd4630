#include "tests/rig/campaign/CampaignTest.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tests/support/Dvr.h"
#include "tests/support/TemporaryFolder.h"

namespace {

std::vector<std::string> Each(const Json& cases, const char* field) {
    std::vector<std::string> values;
    for (const Json& one : cases) {
        values.push_back(one[field]);
    }
    return values;
}

using Strings = std::vector<std::string>;

#ifdef __SANITIZE_ADDRESS__
constexpr int kMostOverhead = 20;  // seconds: such programs take seconds to start where many do
#else
constexpr int kMostOverhead = 3;
#endif

TEST_F(CampaignTest, OfAGoodDvrPassesBetweenTwoCleanExports) {
    const ProgramResult result =
        RunCampaign({"--cases", "xfer-2.0,config-2.0", "--dvr", Dvr(), "--note", "unit 7", "--seed", "5"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_EQ(result.errors, "");
    const Json campaign = Evidence();
    EXPECT_EQ(campaign["state"], "finished");
    EXPECT_EQ(campaign["outcome"], "PASS");
    EXPECT_EQ(campaign["note"], "unit 7");
    EXPECT_EQ(campaign["seed"], 5);
    EXPECT_EQ(Each(campaign["cases"], "id"),
              (Strings{"clean-2.0", "xfer-2.0", "config-2.0", "recovery-2.0"}));
    EXPECT_EQ(Each(campaign["cases"], "outcome"), (Strings{"PASS", "PASS", "PASS", "PASS"}));
    for (const Json& one : campaign["cases"]) {
        EXPECT_EQ(one["harness"]["status"], 44);
        EXPECT_EQ(one["dvr"]["status"], 0);
        EXPECT_LT(one["times"]["overhead"], kMostOverhead) << "measured on a machine with much to do";
        EXPECT_EQ(one["times"]["waited"], 0.0) << "the DVR closes first, so the port is free at once";
    }
    ExpectHolds(result.output, "PASS: 4 PASS; see /mnt/campaign/index.html");
    ExpectHolds(result.output, "seed 5");
    ExpectHolds(campaign["cases"][0]["dvr"]["command"], "--seed 5");
}

TEST_F(CampaignTest, RunsTheFirstDialectToo) {
    const Json one = RunCase("clean-1.0", {"--dvr", Dvr()});
    EXPECT_EQ(result_.status, 0) << result_.output;
    EXPECT_EQ(one["protocol"], 1);
    EXPECT_EQ(one["times"]["pauses"], 0.25 * 4 + 1);
}

TEST_F(CampaignTest, EndsSilenceAfterAWrongPrefixWhenPatienceEnds) {
    const Json one = RunCase("size-2.0", {"--dvr", Dvr("--frame-timeout 3600"), "--patience", "0.5"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"] << ": the DVR itself would wait for an hour";
}

TEST_F(CampaignTest, FindsWhatADvrDoesWrong) {
    const Json one = RunCase("xfer-2.0", {"--dvr", Dvr("--defect double-xfer-in-progress")});
    EXPECT_EQ(result_.status, 1) << result_.output;
    EXPECT_EQ(one["outcome"], "FAIL");
    EXPECT_EQ(one["verdict"], "FAIL");
    ExpectHolds(one["reason"], "messages.asked: ");
    EXPECT_FALSE(one["suspect"]);
}

TEST_F(CampaignTest, PassesWithAWarningUnlessItIsStrict) {
    std::filesystem::copy("/mnt/recordings/E1", "/mnt/recordings/E2");
    const std::string dvr = Dvr("--defect description-without-video");
    Json one = RunCase("clean-1.0", {"--dvr", dvr});
    EXPECT_EQ(result_.status, 0) << result_.output;
    EXPECT_EQ(one["outcome"], "PASS");
    EXPECT_EQ(one["verdict"], "WARNING");
    ExpectHolds(one["reason"], "with a warning: event.files: ");
    ExpectHolds(result_.output, one["reason"]);
    ExpectHolds(EvidenceText("index.html"), "class=\"letter verdict warning\"");
    out_ = "/mnt/strict";
    one = RunCase("clean-1.0", {"--dvr", dvr, "--strict"});
    EXPECT_EQ(result_.status, 1) << result_.output;
    EXPECT_EQ(one["outcome"], "FAIL");
    EXPECT_TRUE(Evidence()["options"]["strict"]);
}

TEST_F(CampaignTest, LooksAtWhatEachCaseHasDelivered) {
    std::filesystem::create_directories("/mnt/delivered");
    const std::string dvr = Dvr("--deliver /mnt/delivered");
    const ProgramResult good =
        RunCampaign({"--cases", "transport-2.0,rehash-2.0", "--dvr", dvr, "--delivered", "/mnt/delivered"});
    EXPECT_EQ(good.status, 0) << good.output << good.errors;
    const std::string verdict = EvidenceText("cases/rehash-2.0/verdict.json");
    ExpectHolds(verdict, "delivery.new-hash");
    ExpectHolds(verdict, "2 files, 2 with a length, 2 with a hash");

    out_ += "-bad";
    const Json bad = RunCase("clean-2.0", {"--dvr", dvr + " --defect no-copy --on FILE_COMPLETE:2",
                                           "--delivered", "/mnt/delivered"});
    EXPECT_EQ(bad["outcome"], "FAIL");
    EXPECT_EQ(bad["reason"], "delivery.file: a file that is not there (E1/E1_1)");
}

TEST_F(CampaignTest, DoesNotBlameTheRestWhenTheCleanExportFails) {
    const ProgramResult result =
        RunCampaign({"--cases", "config-2.0", "--dvr", Dvr("--defect missing-source")});
    EXPECT_EQ(result.status, 1);
    const Json cases = Evidence()["cases"];
    EXPECT_EQ(Each(cases, "outcome"), (Strings{"FAIL", "PASS", "FAIL"}));
    EXPECT_FALSE(cases[0]["suspect"]);
    EXPECT_TRUE(cases[1]["suspect"]);
    EXPECT_TRUE(cases[2]["suspect"]);
    ExpectHolds(result.errors, "clean-2.0 did not pass");
}

TEST_F(CampaignTest, KnowsThatTheDvrEndedTheHarness) {
    const Json one = RunCase("clean-2.0", {"--dvr", Dvr("--defect malformed-xml --on EVENT")});
    EXPECT_EQ(one["outcome"], "FAIL") << one["reason"];
    EXPECT_EQ(one["harness"]["signal"], SIGABRT);
    EXPECT_EQ(one["harness"]["stoppedBy"], "");
    ExpectHolds(EvidenceText("cases/clean-2.0/harness.err"), "Assertion `not incomingMessage.Error()'");
}

TEST_F(CampaignTest, KnowsThatTheDvrLeftTheHarnessAlone) {
    const Json one = RunCase("clean-2.0", {"--dvr", Dvr("--defect close=all --on EVENT")});
    EXPECT_EQ(one["outcome"], "FAIL") << one["reason"];
    if (IsDirect()) {  // else the harness may have sent all before it can know
        ExpectHolds(one["reason"], "SIGPIPE");
        EXPECT_EQ(one["harness"]["signal"], SIGPIPE);
    }
}

TEST_F(CampaignTest, RepeatsCasesToShowTheirSpread) {
    RunCase("config-2.0", {"--dvr", Dvr(), "--repeat", "2"});
    EXPECT_EQ(result_.status, 0) << result_.output;
    const Json campaign = Evidence();
    EXPECT_EQ(Each(campaign["cases"], "id"), (Strings{"config-2.0-1", "config-2.0-2"}));
    EXPECT_EQ(campaign["spread"][0]["outcomes"]["PASS"], 2);
    EXPECT_EQ(campaign["spread"][0]["reactions"][0]["request"], "UPDATE_CONFIGURATION");
    ExpectHolds(result_.output, "spread of config-2.0: ");
}

TEST_F(CampaignTest, CountsWhatItExercised) {
    RunCase("config-2.0", {"--dvr", Dvr()});
    const Json coverage = Evidence()["coverage"];
    EXPECT_EQ(coverage["switches"][6], Json({{"name", "-g"}, {"cases", {"config-2.0"}}}));
    const auto unreached = coverage["unreached"].get<Strings>();
    EXPECT_EQ(std::count(unreached.begin(), unreached.end(), "2.0 DVR: CONFIGURATION_UPDATE_ERROR"), 0);
    EXPECT_EQ(std::count(unreached.begin(), unreached.end(), "2.0 DVR: EVENT_LIST source"), 1);
    ExpectHolds(result_.output, "coverage: ");
}

TEST_F(CampaignTest, WaitsForARecorder) {
    ProgramSurroundings surroundings;
    std::unique_ptr<::Dvr> dvr;
    surroundings.started = [&dvr](pid_t) {
        dvr = std::make_unique<::Dvr>(Strings{"--protocol", "2", "--recordings", "/mnt/recordings"});
    };
    const ProgramResult result = RunCampaign({"--bare", "--cases", "close-2.0"}, surroundings);
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_TRUE(Evidence()["cases"][0]["dvr"].is_null());
    dvr->EndsWithStatus(0);
}

TEST_F(CampaignTest, FollowsALogThatIsAFile) {
    const std::string harness = "exec >/mnt/harness.log; " + HarnessCommand().Line();
    const Json one =
        RunCase("config-2.0", {"--dvr", Dvr(), "--velloran", harness, "--log", "/mnt/harness.log"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(one["harness"]["status"], 44) << "through a shell that waits";
    EXPECT_EQ(EvidenceText("cases/config-2.0/harness.log"), ReadFile("/mnt/harness.log"));
}

TEST_F(CampaignTest, StopsTheHarnessByACommand) {
    const std::string harness = "sh -c 'echo $$ >/mnt/pid; exec " + HarnessCommand().Line() + " \"$@\"' sh";
    const Json one =
        RunCase("config-2.0", {"--dvr", Dvr(), "--velloran", harness, "--stop", "kill -INT $(cat /mnt/pid)"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    EXPECT_EQ(one["harness"]["stoppedBy"], "kill -INT $(cat /mnt/pid)");
}

TEST_F(CampaignTest, KnowsFailuresThatItIsTold) {
    const std::string dvr = Dvr("--defect missing-source");
    std::ofstream("/mnt/known") << "event-list.source EVENT_LIST without source\n";
    EXPECT_EQ(RunCase("clean-2.0", {"--dvr", dvr, "--known", "/mnt/known"})["outcome"], "KNOWN FAILURE");
    EXPECT_EQ(result_.status, 0);
    out_ += "-2";
    RunCase("clean-2.0", {"--dvr", Dvr(), "--known", "/mnt/known"});
    EXPECT_EQ(result_.status, 1) << "the list must be fixed";
    EXPECT_EQ(Evidence()["knownUnseen"], Json({"event-list.source"}));
}

/// Without a world, which has no terminals.
TEST(CampaignOnATerminal, RewritesTheLineOfTheCaseThatRuns) {
    const TemporaryFolder folder;
    ProgramSurroundings surroundings;
    surroundings.onTerminal = true;
    surroundings.environment = {"TERM=xterm"};
    const ProgramResult result =
        RunRig({"run", "--bare", "--cases", "config-2.0", "--connect-timeout", "0.3", "--velloran",
                "sh -c 'tail -f /dev/null' sh", "--out", (folder.Path() / "campaign").string()},
               surroundings);
    EXPECT_EQ(result.status, 3) << result.output;
    ExpectHolds(result.output, "\r\033[K1/1 config-2.0 ");
    ExpectHolds(result.output, "starting");
    ExpectHolds(result.output, "\033[31mENVIRONMENT");
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line, '\r');) {
        const bool isLive = line.find("starting") != std::string::npos;
        EXPECT_TRUE(!isLive || line.size() < 80 + 3) << "wraps, and cannot be rewritten: " << line;
    }
}

}  // namespace
