#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/TemporaryFolder.h"

// --deliver, with the built program: what is in the folder when something goes wrong.
namespace {

using rig::dvr::Message;
using Arguments = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

std::string ContentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

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

TEST_F(DeliverCommandTest, DeliversFilesOfAnyName) {
    const Arguments names{" a  \"b\" & 'c' <d>", "M\xc3\xbcnchen \xe6\x9d\xb1", std::string(200, 'n'),
                          "a]]>b", "&amp;&#65;"};
    for (const std::string& name : names) {
        Record(name, "m.xml", "<a/>");
        Record(name, "front left/" + name, "content of " + name);
    }
    const ProgramResult result = PlayDvr20(
        {"--recordings", From().string(), "--deliver", To().string(), "--transfer-time", "0"},
        [&](BackendConnection& backend) {
            backend.Read();
            backend.Send(R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)");
            const Message list = Message::Parse(backend.Read());
            for (const pugi::xml_node event : list.Root().child("events").children()) {
                const std::string name = event.text().get();
                const Message described = Message::Parse(RequestOf(backend, Request("NEXT_EVENT", name)));
                EXPECT_EQ(described.Get("reid"), name);
                for (const std::string& file : {std::string("m.xml"), "front left/" + name}) {
                    const Message complete =
                        Message::Parse(RequestOf(backend, Request("GET_FILE", name, file)));
                    EXPECT_EQ(complete.Get("reid"), name);
                    EXPECT_EQ(complete.Get("file"), file);
                }
                RequestOf(backend, Request("EVENT_XFER_COMPLETE", name));
            }
            backend.Send(R"(<msg req="DONE" protocolVersion="2.0"/>)");
        });
    EXPECT_EQ(result.status, 0) << result.errors;
    for (const std::string& name : names) {
        EXPECT_EQ(ContentOf(To() / name / "m.xml"), "<a/>");
        EXPECT_EQ(ContentOf(To() / name / "front left" / name), "content of " + name);
    }
}

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
    EXPECT_EQ(ContentOf(beside / "E/a"), "content");
}

TEST_F(DeliverCommandTest, RefusesAFolderThatCannotBeCreated) {
    const std::string expected = "velloran-rig dvr: --deliver: expected a folder that can be created, found ";
    const ProgramResult unnamed = RunRig({"dvr", "--deliver", ""});
    EXPECT_EQ(unnamed.status, 64);
    EXPECT_EQ(unnamed.errors, expected + "'': Invalid argument\n");
    EXPECT_EQ(unnamed.output, "");
    const ProgramResult file = RunRig({"dvr", "--deliver", "/dev/null"});
    EXPECT_EQ(file.status, 64);
    EXPECT_EQ(file.errors, expected + "'/dev/null': Not a directory\n");
    EXPECT_EQ(file.output, "");
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
    EXPECT_EQ(ContentOf(To() / "E/a").size(), 30'000U);
}

void WriteFile(const char* name, const std::string& content) {
    const int file = open(name, O_WRONLY | O_CLOEXEC);
    if (write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
        _exit(126);
    }
    close(file);
}

/// Mounts a small file system for this process alone. For that it becomes root of a namespace of its own, if
/// the system allows it.
void MountSmallDisk(const fs::path& folder, const std::string& size) {
    const std::string user = std::to_string(getuid());
    const std::string group = std::to_string(getgid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
        WriteFile("/proc/self/uid_map", "0 " + user + " 1");
        WriteFile("/proc/self/setgroups", "deny");
        WriteFile("/proc/self/gid_map", "0 " + group + " 1");
    } else if (unshare(CLONE_NEWNS) == -1 ||
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == -1) {
        _exit(126);
    }
    if (mount("small", folder.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == -1) {
        _exit(126);
    }
}

TEST_F(DeliverCommandTest, EndsWithStatus64AndOneLineWhenTheDiskIsFull) {
    Record("E", "a", std::string(1'000'000, 'x'));
    fs::create_directory(To());
    const ProgramResult result = PlayDvr20({"--recordings", From().string(), "--deliver", To().string()},
                                           [](BackendConnection& backend) {
                                               StartEvent(backend, "E");
                                               backend.Send(Request("GET_FILE", "E", "a").Text());
                                               EXPECT_TRUE(backend.IsClosedByPeer());
                                           },
                                           {{}, false, [&] { MountSmallDisk(To(), "512k"); }, nullptr});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.errors, "velloran-rig dvr: --deliver: expected a file that can be written, found '" +
                                 (To() / "E/a").string() + "': No space left on device\n");
    EXPECT_NE(result.output.find("not finished: exported 0 of 1 event, 0 files, 0 bytes"), std::string::npos);
}

}  // namespace
