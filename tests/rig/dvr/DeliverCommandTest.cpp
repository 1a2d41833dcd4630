#include <gtest/gtest.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/ReadFile.h"
#include "tests/support/TemporaryFolder.h"

// --deliver, with the built program: what is in the folder when something goes wrong.
namespace {

using rig::dvr::Message;
using Arguments = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

bool HasFiles(const fs::path& folder) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_directory()) {
            return true;
        }
    }
    return false;
}

/// A folder of recordings, and a place for copies that does not exist yet.
class DeliverCommandTest : public testing::Test {
 protected:
    fs::path From() const { return folder_.Path() / "from"; }
    fs::path To() const { return folder_.Path() / "to"; }
    void Record(const std::string& event, const std::string& file, const std::string& content) const {
        folder_.Write("from/" + event + "/" + file, content);
    }

    TemporaryFolder folder_;
};

TEST_F(DeliverCommandTest, RefusesToDeliverIntoTheRecordings) {
    Record("E", "a", "");
    fs::create_directory_symlink(From(), To());
    for (const fs::path& folder :
         {From(), From() / "E", From() / "new", From() / "E" / ".." / "x", To() / "E"}) {
        const ProgramResult result =
            RunRig({"dvr", "--recordings", From().string(), "--deliver", folder.string()});
        EXPECT_EQ(result.status, 64);
        EXPECT_EQ(result.errors,
                  "velloran-rig dvr: --deliver: expected a folder outside --recordings, found '" +
                      folder.string() + "'\n");
        EXPECT_EQ(result.output, "");
    }
    EXPECT_EQ(std::distance(fs::recursive_directory_iterator(From()), fs::recursive_directory_iterator()), 2);
}

TEST_F(DeliverCommandTest, DeliversNextToTheRecordings) {
    Record("E", "a", "content");
    const fs::path beside = folder_.Path() / "from-copies";
    PlayDvr20({"--recordings", From().string(), "--deliver", beside.string()},
              [](BackendConnection& backend) {
                  StartEvent(backend, "E");
                  RequestOf(backend, Request("GET_FILE", "E", "a"));
              });
    EXPECT_EQ(ReadFile(beside / "E/a"), "content");
}

/// If this process is root, takes from the program that it becomes the right to bypass permissions.
void ObeyPermissions() {
    for (const int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
        if (geteuid() == 0 && prctl(PR_CAPBSET_DROP, capability) == -1) {
            _exit(126);
        }
    }
}

TEST_F(DeliverCommandTest, RefusesAFolderThatItMayNotWrite) {
    fs::create_directory(To());
    fs::permissions(To(), fs::perms::owner_read | fs::perms::owner_exec);
    const ProgramResult result =
        RunRig({"dvr", "--deliver", To().string()}, {{}, false, ObeyPermissions, nullptr});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors, "velloran-rig dvr: --deliver: expected a folder that can be written, found '" +
                                 To().string() + "': Permission denied\n");
    EXPECT_EQ(result.output, "");
}

TEST_F(DeliverCommandTest, RefusesRecordingsThatItMayNotRead) {
    Record("E1", "a", "");
    Record("E2", "front/a", "");
    Record("E2", "m.xml", "");
    for (const fs::path& folder : {From() / "E2" / "front", From() / "E2", From()}) {
        fs::permissions(folder, fs::perms::none);
        const ProgramResult result =
            RunRig({"dvr", "--recordings", From().string(), "--deliver", To().string()},
                   {{}, false, ObeyPermissions, nullptr});
        fs::permissions(folder, fs::perms::owner_all);
        EXPECT_EQ(result.status, 64);
        EXPECT_EQ(result.errors,
                  "velloran-rig dvr: --recordings: expected a folder that can be read, found '" +
                      folder.string() + "': Permission denied\n");
        EXPECT_EQ(result.output, "");
    }
    EXPECT_FALSE(fs::exists(To()));
}

TEST_F(DeliverCommandTest, EndsWithStatus64AtAFileThatItMayNotRead) {
    Record("E", "a", "secret");
    fs::permissions(From() / "E" / "a", fs::perms::none);
    const ProgramResult result = PlayDvr20({"--recordings", From().string(), "--deliver", To().string()},
                                           [](BackendConnection& backend) {
                                               StartEvent(backend, "E");
                                               backend.Send(Request("GET_FILE", "E", "a").Text());
                                               EXPECT_TRUE(backend.IsClosedByPeer());
                                           },
                                           {{}, false, ObeyPermissions, nullptr});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors, "velloran-rig dvr: --recordings: expected a file that can be read, found '" +
                                 (From() / "E/a").string() + "': Permission denied\n");
    EXPECT_FALSE(HasFiles(To()));
}

/// Waits until a copy is being made.
void AwaitFiles(const fs::path& folder) {
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (!HasFiles(folder) && Clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(HasFiles(folder));
}

class EndedBySignalTest : public DeliverCommandTest, public testing::WithParamInterface<int> {};

TEST_P(EndedBySignalTest, LeavesNothingTemporary) {
    Record("E", "a", std::string(100'000, 'x'));
    std::promise<pid_t> process;
    const ProgramResult result =
        PlayDvr20({"--recordings", From().string(), "--deliver", To().string(), "--rate", "1000"},
                  [&](BackendConnection& backend) {
                      StartEvent(backend, "E");
                      backend.Send(Request("GET_FILE", "E", "a").Text());
                      AwaitFiles(To());
                      kill(process.get_future().get(), GetParam());
                      EXPECT_TRUE(backend.IsClosedByPeer());
                  },
                  {{}, false, nullptr, [&](pid_t started) { process.set_value(started); }});
    EXPECT_EQ(result.signal, GetParam());
    EXPECT_FALSE(HasFiles(To()));
}

INSTANTIATE_TEST_SUITE_P(Signals, EndedBySignalTest, testing::Values(SIGHUP, SIGINT, SIGTERM));

TEST_F(DeliverCommandTest, RespectsASignalThatItWasStartedToIgnore) {
    Record("E", "a", std::string(30'000, 'x'));
    std::promise<pid_t> process;
    const ProgramResult result = PlayDvr20(
        {"--recordings", From().string(), "--deliver", To().string(), "--rate", "100000"},
        [&](BackendConnection& backend) {
            StartEvent(backend, "E");
            backend.Send(Request("GET_FILE", "E", "a").Text());
            AwaitFiles(To());
            kill(process.get_future().get(), SIGHUP);
            EXPECT_EQ(Message::Parse(backend.Read()).Name(), "FILE_COMPLETE");
        },
        {{}, false, [] { signal(SIGHUP, SIG_IGN); }, [&](pid_t started) { process.set_value(started); }});
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(ReadFile(To() / "E/a").size(), 30'000U);
}

}  // namespace
