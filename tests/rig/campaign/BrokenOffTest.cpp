#include <poll.h>

#include <csignal>
#include <filesystem>
#include <random>

#include "tests/rig/campaign/CampaignTest.h"
#include "tests/support/Sockets.h"
#include "tests/support/Until.h"

namespace {

/// Campaigns that do not finish.
class BrokenOffTest : public CampaignTest {
 protected:
    /// Expects all JSON on the disk to be whole. @return how many files there are
    int AllIsWhole() const {
        int count = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(out_)) {
            if (entry.path().extension() == ".json") {
                ++count;
                EXPECT_TRUE(Json::accept(ReadFile(entry.path()))) << entry.path();
            }
        }
        return count;
    }

    /// Whether a case's harness has already logged this.
    bool HasLogged(const std::string& id, const std::string& text) const {
        const std::string path = out_ + "/cases/" + id + "/harness.log";
        return FileExists(path) && ReadFile(path).find(text) != std::string::npos;
    }

    /// Runs a campaign and sends it a signal once `moment` returns.
    ProgramResult RunUntil(const std::function<void()>& moment, int signal,
                           const std::vector<std::string>& arguments) {
        ProgramSurroundings surroundings;
        surroundings.started = [&](pid_t process) {
            moment();
            kill(process, signal);
        };
        return RunCampaign(arguments, surroundings);
    }

    /// Nothing that the campaign started is left, and nobody listens.
    static void NothingIsLeft() {
        EXPECT_TRUE(Until([] { return not sockets::IsListening(5001); }));
        EXPECT_TRUE(Until([] { return sockets::All().empty() or not HasOpen(); }));
    }

 private:
    static bool HasOpen() {
        for (const sockets::Socket& socket : sockets::All()) {
            if (socket.state == 1) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(BrokenOffTest, ByCtrlCStopsAllAndWritesWhatThereIs) {
    const ProgramResult result =
        RunUntil([this] { EXPECT_TRUE(Until([this] { return HasLogged("clean-2.0", "got an OK"); })); },
                 SIGINT, {"--cases", "event-2.0", "--dvr", Dvr()});
    EXPECT_EQ(result.status, 130) << result.output;
    const Json campaign = Evidence();
    EXPECT_EQ(campaign["state"], "interrupted");
    EXPECT_EQ(campaign["status"], 130);
    EXPECT_EQ(campaign["counts"], Json({{"INTERRUPTED", 1}, {"NOT RUN", 2}}));
    const Json one = campaign["cases"][0];
    EXPECT_EQ(one["outcome"], "INTERRUPTED");
    EXPECT_EQ(one["harness"]["status"], 44) << "told to stop, as at a good end";
    EXPECT_FALSE(one["dvr"].is_null());
    EXPECT_EQ(Evidence("cases/clean-2.0/case.json")["outcome"], "INTERRUPTED");
    EXPECT_TRUE(FileExists(out_ + "/cases/clean-2.0/report.html"));
    EXPECT_FALSE(FileExists(out_ + "/cases/event-2.0"));
    ExpectHolds(result.output, "INTERRUPTED: 1 INTERRUPTED, 2 NOT RUN");
    NothingIsLeft();
}

TEST_F(BrokenOffTest, WhileItWaitsForARecorder) {
    const ProgramResult result =
        RunUntil([] { EXPECT_TRUE(Until([] { return sockets::IsListening(5001); })); }, SIGTERM,
                 {"--cases", "event-2.0"});
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(Evidence()["cases"][0]["reason"], "by SIGTERM (Terminated)");
}

/// Interrupted in the export with the fault, and in the one after it.
class FaultBrokenOffTest : public BrokenOffTest, public testing::WithParamInterface<const char*> {};

TEST_P(FaultBrokenOffTest, StopsHarnessProxyAndDvr) {
    const std::string id = "split=1@GET_FILE-2.0";
    const ProgramResult result =
        RunUntil([&] { EXPECT_TRUE(Until([&] { return HasLogged(id + GetParam(), "got an OK"); })); }, SIGINT,
                 {"--bare", "--faults", id, "--dvr", Dvr("--recorder")});
    EXPECT_EQ(result.status, 130) << result.output;
    EXPECT_EQ(Evidence()["cases"][0]["outcome"], "INTERRUPTED");
    EXPECT_EQ(AllIsWhole(), 3);
    NothingIsLeft();
}

INSTANTIATE_TEST_SUITE_P(Exports, FaultBrokenOffTest, testing::Values("", "/recovery"));

TEST_F(BrokenOffTest, InAHook) {
    const ProgramResult result =
        RunUntil([] { EXPECT_TRUE(Until([] { return FileExists("/mnt/hook"); })); }, SIGINT,
                 {"--cases", "event-2.0", "--before-case", "touch /mnt/hook; tail -f /dev/null"});
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(Evidence()["cases"][0]["outcome"], "INTERRUPTED");
    EXPECT_EQ(AllIsWhole(), 3);
}

TEST_F(BrokenOffTest, NotByTheHangupThatItWasStartedToIgnore) {
    ProgramSurroundings surroundings;
    surroundings.prepare = [] { signal(SIGHUP, SIG_IGN); };
    surroundings.started = [this](pid_t process) {
        EXPECT_TRUE(Until([this] { return HasLogged("config-2.0", "got an OK"); }));
        kill(process, SIGHUP);
    };
    const ProgramResult result =
        RunCampaign({"--bare", "--cases", "config-2.0", "--dvr", Dvr()}, surroundings);
    EXPECT_EQ(result.status, 0) << result.output;
}

/// Killed so that nothing more can be written, at a random moment of an export.
class KilledTest : public BrokenOffTest, public testing::WithParamInterface<unsigned int> {};

TEST_P(KilledTest, LeavesWholeEvidenceAndNoProcess) {
    std::mt19937 dice(GetParam());
    const int moment = std::uniform_int_distribution<int>(0, 2500)(dice);
    const ProgramResult result = RunUntil(
        [this, moment] {
            EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/clean-2.0-1/case.json"); }));
            poll(nullptr, 0, moment);
        },
        SIGKILL, {"--cases", "config-2.0", "--repeat", "20", "--dvr", Dvr()});
    EXPECT_EQ(result.signal, SIGKILL);
    NothingIsLeft();
    EXPECT_EQ(Evidence()["state"], "running");
    EXPECT_EQ(Evidence()["cases"].size(), 60U);
    EXPECT_GE(AllIsWhole(), 2) << "after " << moment << " ms";
}

INSTANTIATE_TEST_SUITE_P(Seeds, KilledTest, testing::Values(1, 2, 3));

/// With a harness that ends at once, a campaign mostly writes.
TEST_F(BrokenOffTest, ByKillWhileItWritesLeavesWholeFiles) {
    std::mt19937 dice(4);
    std::uniform_int_distribution<int> moments(0, 200);
    for (int round = 0; round < 8; ++round) {
        out_ = "/mnt/campaign-" + std::to_string(round);
        const int moment = moments(dice);
        RunUntil(
            [this, moment] {
                EXPECT_TRUE(Until([this] { return FileExists(out_ + "/cases/event-2.0-1/case.json"); }));
                poll(nullptr, 0, moment);
            },
            SIGKILL, {"--cases", "event-2.0", "--bare", "--velloran", "true", "--repeat", "100"});
        EXPECT_GE(AllIsWhole(), 2) << "after " << moment << " ms";
    }
}

}  // namespace
