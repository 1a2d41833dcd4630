#include <linux/capability.h>
#include <sys/prctl.h>

#include <csignal>
#include <filesystem>

#include "tests/rig/campaign/CampaignTest.h"

namespace {

using EvidenceTest = CampaignTest;

TEST_F(EvidenceTest, HoldsAllThatACaseLeft) {
    const Json one = RunCase("config-2.0", {"--dvr", Dvr()});
    const std::string folder = one["folder"];
    Json files = {"case.json", "dvr.log", "harness.err", "harness.log", "report.html", "verdict.json"};
    if (!IsDirect()) {
        files.insert(files.begin() + 4, "proxy.jsonl");
    }
    EXPECT_EQ(one["files"], files);
    for (const std::string file : one["files"]) {
        EXPECT_TRUE(FileExists(out_ + "/" + folder + "/" + file)) << file;
    }
    ExpectHolds(EvidenceText(folder + "/harness.log"), "Got CONFIGURATION_UPDATE_ERROR");
    ExpectHolds(EvidenceText(folder + "/harness.log"), "shutting down");
    ExpectHolds(EvidenceText(folder + "/dvr.log"), "-> CONFIGURATION_UPDATE_ERROR");
    ExpectHolds(EvidenceText(folder + "/report.html"), "config.answer");
    Json alone = Evidence(folder + "/case.json");
    alone.erase("format");
    EXPECT_EQ(alone, one);
    const Json verdict = Evidence(folder + "/verdict.json");
    EXPECT_EQ(verdict["runs"][0]["name"], "config-2.0");
    EXPECT_EQ(verdict["runs"][0]["checks"].back()["id"], "campaign.case");
    EXPECT_EQ(verdict["runs"][0]["checks"].back()["verdict"], "PASS");
    EXPECT_FALSE(verdict["runs"][0]["steps"].empty());
}

TEST_F(EvidenceTest, TellsTheWholeCampaignInOtherForms) {
    RunCase("config-2.0", {"--dvr", Dvr(), "--repeat", "2"});
    const std::string junit = EvidenceText("junit.xml");
    ExpectHolds(junit, "name=\"config-2.0-1 velloran -p 2 -g\"");
    ExpectHolds(junit, "name=\"config-2.0-2 velloran -p 2 -g\"");
    ExpectHolds(junit, "name=\"campaign.case\"");
    const std::string tap = EvidenceText("campaign.tap");
    ExpectHolds(tap, "TAP version 13\n1..");
    ExpectHolds(tap, "- config-2.0-2 config.answer");
}

TEST_F(EvidenceTest, NamesEverythingInvolved) {
    RunCase("config-2.0", {"--dvr", Dvr(), "--after-case", "true"});
    const Json campaign = Evidence();
    EXPECT_EQ(campaign["commandLine"][1], "run");
    EXPECT_TRUE(campaign["versions"].contains("velloran-rig"));
    EXPECT_TRUE(campaign["versions"].contains("system"));
    ExpectHolds(campaign["commands"]["harness"], "/velloran");
    EXPECT_EQ(campaign["versions"]["harnessSha256"].get<std::string>().size(), 64U);
    EXPECT_EQ(campaign["commands"]["after-case"], "true");
    EXPECT_EQ(campaign["options"]["idleTimeout"], 30);
    EXPECT_LT(campaign["begin"], campaign["end"]);
}

TEST_F(EvidenceTest, HoldsTheCapturedPackets) {
    const Json one = RunCase("config-2.0", {"--dvr", Dvr(), "--capture"});
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    const std::string capture = EvidenceText("cases/config-2.0/capture.pcap");
    EXPECT_EQ(capture.substr(0, 4), "\xd4\xc3\xb2\xa1");
    ExpectHolds(capture, "<msg req=\"CONFIGURATION_UPDATE_ERROR\"");
    EXPECT_EQ(result_.errors, "");
}

TEST_F(EvidenceTest, SaysThatItMayNotCaptureAndGoesOn) {
    ProgramSurroundings surroundings;
    surroundings.prepare = [] { prctl(PR_CAPBSET_DROP, CAP_NET_RAW); };
    const ProgramResult result =
        RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr(), "--capture"}, surroundings);
    EXPECT_EQ(result.status, 0) << result.output;
    ExpectHolds(result.errors,
                "config-2.0: no capture: --capture: expected to capture packets (root, or the");
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    EXPECT_FALSE(FileExists(out_ + "/cases/config-2.0/capture.pcap"));
}

TEST_F(EvidenceTest, IsNotMixedWithWhatIsThereAlready) {
    RunCase("config-2.0", {"--dvr", Dvr()});
    const std::string before = EvidenceText("campaign.json");
    const ProgramResult again = RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr()});
    EXPECT_EQ(again.status, 64);
    EXPECT_EQ(CountLines(again.errors), 1U);
    ExpectHolds(again.errors, "/mnt/campaign");
    EXPECT_EQ(EvidenceText("campaign.json"), before);
}

TEST_F(EvidenceTest, IsReportedLostWhereItCannotBeWritten) {
    out_ = "/proc/campaign";
    const ProgramResult result = RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr()});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
}

}  // namespace
