#include <csignal>
#include <fstream>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Until.h"

namespace {

const std::vector<std::string> kTwoCases = {"--bare", "--cases", "config-2.0,upgrade-config-2.0"};
const Json kAll = {"config-2.0", "upgrade-config-2.0"};

/// Parts of a campaign of two cases.
class PartTest : public CampaignTest {
 protected:
    ProgramResult RunPart(std::vector<std::string> options,
                          const std::vector<std::string>& environment = {}) {
        options.insert(options.end(), kTwoCases.begin(), kTwoCases.end());
        options.insert(options.end(), {"--dvr", Dvr()});
        ProgramSurroundings surroundings;
        surroundings.environment = environment;
        return RunCampaign(options, surroundings);
    }
};

TEST_F(PartTest, RunsItsCasesAndKnowsTheOthers) {
    const ProgramResult result = RunPart({"--shard", "2/2"}, {"CI_NODE_INDEX=1", "CI_NODE_TOTAL=2"});
    EXPECT_EQ(result.status, 0);
    ExpectHolds(result.output, "\npart 2 of 2 (--shard), with 1 of 2 cases\n");
    const Json campaign = Evidence();
    EXPECT_EQ(campaign["shard"], Json({{"index", 2},
                                       {"total", 2},
                                       {"from", "--shard"},
                                       {"cases", kAll},
                                       {"knownUnseen", Json::array()}}));
    ASSERT_EQ(campaign["cases"].size(), 1U);
    EXPECT_EQ(campaign["cases"][0]["id"], "upgrade-config-2.0");
    ExpectHolds(EvidenceText("index.html"), "part 2 of 2 (--shard), of a campaign of 2 cases");
}

TEST_F(PartTest, IsTakenFromTheEnvironment) {
    const ProgramResult result =
        RunPart({}, {"TEST_SHARD_INDEX=0", "TEST_TOTAL_SHARDS=2", "CI_NODE_INDEX=3", "CI_NODE_TOTAL=2"});
    ExpectHolds(result.output, "velloran-rig run: not taken: CI_NODE_INDEX=3, CI_NODE_TOTAL=2; ");
    ExpectHolds(
        result.output,
        "\npart 1 of 2 (TEST_SHARD_INDEX and TEST_TOTAL_SHARDS), with 1 of 2 cases; --no-shard runs all\n");
    EXPECT_EQ(Evidence()["shard"]["from"], "TEST_SHARD_INDEX and TEST_TOTAL_SHARDS");
    EXPECT_EQ(Evidence()["cases"][0]["id"], "config-2.0");
}

TEST_F(PartTest, IsNotWantedWithNoShard) {
    RunPart({"--no-shard"}, {"CI_NODE_INDEX=1", "CI_NODE_TOTAL=2"});
    EXPECT_EQ(Evidence()["shard"], Json());
    EXPECT_EQ(Evidence()["cases"].size(), 2U);
}

TEST_F(PartTest, WithoutACaseProvesNothing) {
    const ProgramResult result = RunPart({"--shard", "3/3"});
    EXPECT_EQ(result.status, 2);
    ExpectHolds(result.output, "part 3 of 3 (--shard), with 0 of 2 cases\n");
    ExpectHolds(result.output, "NOT RUN: no case; see ");
    EXPECT_EQ(Evidence()["outcome"], "NOT RUN");
}

TEST_F(PartTest, LeavesToTheWholeWhatIsKnownAndUnseen) {
    std::ofstream("/mnt/known") << "config.answer the DVR is silent\n";
    EXPECT_EQ(RunPart({"--shard", "1/2", "--known", "/mnt/known"}).status, 0);
    EXPECT_EQ(Evidence()["shard"]["knownUnseen"], Json({"config.answer"}));
    EXPECT_EQ(Evidence()["knownUnseen"], Json::array());
}

TEST_F(PartTest, StaysThePartThatItWasWhenItIsGoneOnWith) {
    ProgramSurroundings surroundings;
    surroundings.environment = {"CI_NODE_INDEX=2", "CI_NODE_TOTAL=2"};
    surroundings.started = [this](pid_t process) {
        EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/upgrade-config-2.0/harness.log"); }));
        kill(process, SIGKILL);
    };
    std::vector<std::string> options = kTwoCases;
    options.insert(options.end(), {"--dvr", Dvr()});
    RunCampaign(options, surroundings);
    const Json before = Evidence()["shard"];
    surroundings = {};
    surroundings.environment = {"CI_NODE_INDEX=1", "CI_NODE_TOTAL=2"};
    EXPECT_EQ(RunRig({"run", "--resume", out_}, surroundings).status, 0);
    EXPECT_EQ(Evidence()["shard"], before);
    ASSERT_EQ(Evidence()["cases"].size(), 1U);
    EXPECT_EQ(Evidence()["cases"][0]["outcome"], "PASS");
}

}  // namespace
