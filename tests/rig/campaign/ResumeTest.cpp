#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Until.h"

namespace {

/// Campaigns of three runs of a case that are broken off in the second.
class ResumeTest : public CampaignTest, public testing::WithParamInterface<int> {
 protected:
    void BreakOff(int signal) {
        ProgramSurroundings surroundings;
        surroundings.started = [&](pid_t process) {
            EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/config-2.0-2/harness.log"); }));
            kill(process, signal);
        };
        RunCampaign({"--bare", "--cases", "config-2.0", "--repeat", "3", "--note", "unit 7", "--known",
                     "known", "--dvr", Dvr()},
                    surroundings);
    }

    ProgramResult Resume() const { return RunRig({"run", "--resume", out_}); }

    std::string folder_ = std::filesystem::current_path();
};

TEST_P(ResumeTest, RunsWhatHasNotComeToItsEnd) {
    std::filesystem::current_path("/mnt");
    std::ofstream("known") << "";
    BreakOff(GetParam());
    std::filesystem::current_path(folder_);
    const std::string first = EvidenceText("cases/config-2.0-1/case.json");
    const ProgramResult result = Resume();
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    const Json campaign = Evidence();
    EXPECT_EQ(campaign["state"], "finished");
    EXPECT_EQ(campaign["counts"], Json({{"PASS", 3}}));
    EXPECT_EQ(campaign["note"], "unit 7");
    EXPECT_EQ(EvidenceText("cases/config-2.0-1/case.json"), first);
    Json same = Json::parse(first);
    same.erase("format");
    EXPECT_EQ(campaign["cases"][0], same);
    EXPECT_NE(Evidence("cases/config-2.0-2~1/case.json")["outcome"], "PASS") << "the first attempt is kept";
    ExpectHolds(result.output, "3 cases, 1 of them done");
}

INSTANTIATE_TEST_SUITE_P(After, ResumeTest, testing::Values(SIGINT, SIGKILL));

TEST_F(ResumeTest, OfAFinishedCampaignReportsAnew) {
    RunCampaign({"--bare", "--cases", "config-2.0", "--repeat", "2", "--dvr", Dvr()});
    const Json before = Evidence();
    const std::string junit = EvidenceText("junit.xml");
    const std::string tap = EvidenceText("campaign.tap");
    std::filesystem::remove(out_ + "/junit.xml");
    EXPECT_EQ(Resume().status, 0);
    Json after = Evidence();
    after["end"] = before["end"];
    EXPECT_EQ(after, before);
    EXPECT_EQ(EvidenceText("junit.xml"), junit);
    EXPECT_EQ(EvidenceText("campaign.tap"), tap);
}

TEST_F(ResumeTest, WaitsForNoCampaignThatRuns) {
    ProgramSurroundings surroundings;
    surroundings.started = [this](pid_t process) {
        EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/config-2.0/harness.log"); }));
        EXPECT_EQ(
            Resume().errors,
            "velloran-rig run: expected a folder to which no other campaign writes, found '" + out_ + "'\n");
        EXPECT_FALSE(FileExists(out_ + "/cases/config-2.0~1"));
        kill(process, SIGINT);
    };
    RunCampaign({"--bare", "--cases", "config-2.0"}, surroundings);
}

TEST_F(ResumeTest, NeedsTheCampaignThatItWas) {
    EXPECT_EQ(
        Resume().errors,
        "velloran-rig run: --resume: expected the folder of a campaign (format 1), found '" + out_ + "'\n");
    RunCampaign({"--bare", "--cases", "config-2.0", "--velloran", "/bin/false"});
    Json campaign = Evidence();
    const std::string now = campaign["versions"]["harnessSha256"];
    campaign["versions"]["harnessSha256"] = "another";
    std::ofstream(out_ + "/campaign.json") << campaign;
    const ProgramResult other = Resume();
    EXPECT_EQ(other.status, 64);
    EXPECT_EQ(other.errors,
              "velloran-rig run: --resume: expected the same harnessSha256 as when the campaign began, "
              "'another', found '" +
                  now + "'\n");
    campaign["versions"]["harnessSha256"] = now;
    campaign["cases"][0]["switches"] = "-p 2";
    std::ofstream(out_ + "/campaign.json") << campaign;
    EXPECT_EQ(Resume().errors,
              "velloran-rig run: --resume: expected the same cases as when the campaign began, 'config-2.0 "
              "-p 2', found 'config-2.0 -p 2 -g'\n");
}

TEST_F(ResumeTest, NeedsWhatACampaignWrites) {
    RunCampaign({"--bare", "--cases", "config-2.0", "--velloran", "/bin/false"});
    Json campaign = Evidence();
    campaign["workingDirectory"] = "/nowhere";
    std::ofstream(out_ + "/campaign.json") << campaign;
    EXPECT_EQ(Resume().errors,
              "velloran-rig run: --resume: expected the folder in which the campaign began, '/nowhere', "
              "found: No such file or directory\n");
    std::ofstream(out_ + "/campaign.json") << R"({"format": 1})";
    EXPECT_EQ(
        Resume().errors,
        "velloran-rig run: --resume: expected a campaign.json as this version writes it, found another in '" +
            out_ + "'\n");
    std::ofstream(out_ + "/campaign.json") << R"({"format": 1, "state": "run)";
    const ProgramResult truncated = Resume();
    EXPECT_EQ(truncated.status, 64);
    EXPECT_EQ(
        truncated.errors,
        "velloran-rig run: --resume: expected the folder of a campaign (format 1), found '" + out_ + "'\n");
}

TEST_F(ResumeTest, LeavesNothingHalfWritten) {
    RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr()});
    std::ofstream(out_ + "/campaign.json.x7Yz01") << "{";
    std::ofstream(out_ + "/notes.txt") << "the user's own";
    EXPECT_EQ(Resume().status, 0);
    EXPECT_FALSE(FileExists(out_ + "/campaign.json.x7Yz01"));
    EXPECT_TRUE(FileExists(out_ + "/notes.txt"));
}

}  // namespace
