#include <sched.h>
#include <sys/mount.h>

#include <filesystem>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Sockets.h"

namespace {

/// Cases of the proxy's faults.
class FaultsTest : public CampaignTest {
 protected:
    Json RunFault(const std::string& id, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--bare", "--faults", id});
        result_ = RunCampaign(arguments);
        return Evidence()["cases"][0];
    }

    /// A command that calls again and again, without a thought for what went wrong.
    static std::string Repeated(const std::string& dvr) { return "while :; do " + dvr + " --wait 5; done"; }
};

class GoodRecorderTest : public FaultsTest, public testing::WithParamInterface<const char*> {};

TEST_P(GoodRecorderTest, Passes) {
    const Json one = RunFault(GetParam(), {"--protocol", "both", "--dvr", Dvr("--recorder")});
    EXPECT_EQ(result_.status, 0) << result_.output;
    EXPECT_EQ(one["id"], GetParam());
    EXPECT_EQ(one["outcome"], "PASS") << one["reason"];
    const std::string folder = one["folder"];
    ExpectHolds(EvidenceText(folder + "/proxy.jsonl"), "\"event\":\"fault\"");
    EXPECT_TRUE(FileExists(out_ + "/" + folder + "/recovery/proxy.jsonl"));
}

INSTANTIATE_TEST_SUITE_P(ToGoOn, GoodRecorderTest, testing::Values("split=1@GET_FILE-2.0"));
INSTANTIATE_TEST_SUITE_P(ToRefuse, GoodRecorderTest, testing::Values("file-of-unknown-event@GET_FILE-2.0"));
INSTANTIATE_TEST_SUITE_P(ToSurvive, GoodRecorderTest, testing::Values("reset=before@GET_XML-1.0"));

TEST_F(FaultsTest, AreFailedByADvrThatDoesNotCallAgain) {
    const std::string dvr = Dvr() + "; sleep 60";
    const Json one = RunFault("reset=before@GET_FILE-2.0", {"--dvr", dvr, "--connect-timeout", "12"});
    EXPECT_EQ(result_.status, 1);
    ExpectHolds(one["reason"], "recovery: connect time-out: no DVR connected within 12 s");
}

TEST_F(FaultsTest, AreFailedByADvrThatTheyEnd) {
    const std::string dvr = Dvr() + "; exit 1";
    const Json one = RunFault("reset=before@GET_FILE-2.0", {"--dvr", dvr, "--patience", "0.2"});
    EXPECT_EQ(one["outcome"], "FAIL");
    EXPECT_EQ(one["reason"], "recovery: the DVR's command ended with status 1");
}

TEST_F(FaultsTest, AreFailedByADvrThatActsOnWhatItMustRefuse) {
    const Json one = RunFault("file-of-unknown-event@GET_FILE-2.0",
                              {"--dvr", Repeated(Dvr("--defect accept-file")), "--connect-timeout", "12"});
    EXPECT_EQ(one["outcome"], "FAIL");
    ExpectHolds(one["reason"], "fault.answer: the DVR did what it must refuse (FILE_COMPLETE to GET_FILE");
}

TEST_F(FaultsTest, AreSearchedForWhatADvrFails) {
    result_ = RunCampaign({"--search", "1", "--seed", "28", "--dvr", Dvr("--recorder --weakness shell")});
    EXPECT_EQ(result_.status, 1) << result_.output;
    const Json search = Json::parse(EvidenceText("search.json"));
    ASSERT_EQ(search["findings"].size(), 1U) << search;
    const Json& finding = search["findings"][0];
    EXPECT_EQ(finding["repeated"], 3);
    const std::string faults = finding["faults"];
    EXPECT_EQ(faults, "file-name=semicolon@GET_FILE-2.0") << "one of three";
    EXPECT_EQ(finding["command"], "velloran-rig run --faults '" + faults + "' --protocol 2 --bare --seed 28");
    ExpectHolds(result_.output, "1 try, 1 finding\n" + faults + "\n");
    EXPECT_EQ(1U, Evidence()["cases"].size()) << "the smallest";
}

TEST_F(FaultsTest, AreNotSearchedWhereNoDvrCanPlay) {
    result_ = RunCampaign({"--search", "1", "--seed", "1", "--dvr", "exit 3"});
    EXPECT_EQ(result_.status, 3) << result_.output;
    ExpectHolds(result_.output, "1 try, 0 findings\n1 could not be judged\nENVIRONMENT; see ");
}

TEST_F(FaultsTest, AreSearchedInVainWithAGoodRecorder) {
    result_ = RunCampaign({"--search", "1", "--seed", "1", "--dvr", Dvr("--recorder")});
    EXPECT_EQ(result_.status, 0) << result_.output;
    ExpectHolds(result_.output, "1 try, 0 findings\nPASS; see ");
    EXPECT_TRUE(std::filesystem::is_empty(out_ + "/cases"));
}

TEST_F(FaultsTest, ThatNeverActTellNothing) {
    const Json one = RunFault("file-of-other-event@GET_FILE-2.0", {"--dvr", Dvr("--recorder")});
    EXPECT_EQ(result_.status, 2) << "the DVR has no other event";
    EXPECT_EQ(one["outcome"], "INCONCLUSIVE");
    ExpectHolds(one["reason"], "fault.acted: ");
    EXPECT_FALSE(FileExists(out_ + "/" + one["folder"].get<std::string>() + "/recovery"));
}

TEST_F(FaultsTest, LeaveWholeEvidenceOnAFullDisk) {
    std::filesystem::create_directory("/mnt/full");
    ASSERT_EQ(mount("none", "/mnt/full", "tmpfs", 0, "size=60k"), 0);
    out_ = "/mnt/full/campaign";
    const Json one = RunFault("split=1@GET_XML-1.0", {"--protocol", "1", "--dvr", Dvr("--recorder")});
    EXPECT_EQ(result_.status, 64);
    ExpectHolds(result_.errors, "expected to write a file, found: No space left on device\n");
    EXPECT_EQ(one["outcome"], "RUNNING");
    EXPECT_FALSE(sockets::IsListening(5001));
}

TEST_F(FaultsTest, FollowACleanExport) {
    RunCampaign({"--faults", "split=1@GET_FILE-2.0", "--velloran", "/bin/false"});
    EXPECT_EQ(Evidence()["cases"].size(), 2U);
    EXPECT_EQ(Evidence()["cases"][0]["id"], "clean-2.0");
}

/// It is said before the first case.
TEST_F(FaultsTest, NeedANetworkForTheHarness) {
    ProgramSurroundings surroundings;
    surroundings.prepare = [] { unshare(CLONE_NEWUSER); };  // as nobody, who may make none
    const ProgramResult result = RunCampaign({"--faults", "quick", "--dvr"}, surroundings);
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors,
              "velloran-rig run: expected a network of its own for the harness, found that the "
              "system refuses it; run as root, or allow user namespaces\n");
    EXPECT_FALSE(FileExists(out_));
}

}  // namespace
