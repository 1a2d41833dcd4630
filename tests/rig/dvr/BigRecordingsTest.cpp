#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "rig/dvr/wire/Message.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

// 10,000 events of 10 files: what a recorder holds after years. Nothing may be quadratic, and memory is
// bounded.
namespace {

using rig::dvr::Message;
namespace fs = std::filesystem;

constexpr int kEvents = 10'000;
constexpr int kFiles = 10;

#ifdef __SANITIZE_ADDRESS__
constexpr bool kMemoryIsKnown = false;  // the sanitizer keeps what was freed
#else
constexpr bool kMemoryIsKnown = true;
#endif

std::string EventName(int event) {
    return "2026-11-20 bus 17 event " + std::to_string(100'000 + event);
}

std::string FileName(int file) {
    return file == 0 ? "description.xml" : "front-" + std::to_string(file) + ".ts";
}

class BigRecordingsTest : public testing::Test {
 protected:
    /// In memory, and with hard links, so that this many files take seconds instead of minutes. A file can
    /// have some 60,000 links.
    BigRecordingsTest() : folder_(fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()) {
        for (int event = 0; event < kEvents; ++event) {
            const fs::path folder = folder_.Path() / EventName(event);
            fs::create_directory(folder);
            for (int file = 0; file < kFiles; ++file) {
                const std::string source = "content " + std::to_string(file);
                if (event == 0) {
                    folder_.Write(source, source);
                }
                fs::create_hard_link(folder_.Path() / source, folder / FileName(file));
            }
        }
    }

    /// The script also gets the DVR's process.
    ProgramResult PlayDvr(const std::string& protocol,
                          const std::function<void(BackendConnection&, pid_t)>& script) const {
        std::promise<pid_t> process;
        Backend backend(
            [&](BackendConnection& connection) { script(connection, process.get_future().get()); });
        return RunRig({"dvr", "--port", std::to_string(backend.Port()), "--protocol", protocol,
                       "--transfer-time", "0", "--recordings", folder_.Path().string()},
                      {{}, false, nullptr, [&](pid_t started) { process.set_value(started); }});
    }

    /// Exports that many of the events in 2.0. @return the peak memory, in kilobytes
    long Export(int events) const;

    TemporaryFolder folder_;
};

/// @return a process's peak memory of its own, in kilobytes; without the program and its libraries, of which
///         the kernel maps more or less
long PeakOf(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::map<std::string, long> kilobytes;
    for (std::string line; std::getline(status, line);) {
        std::string name;
        std::istringstream words(line);
        words >> name;
        words >> kilobytes[name];
    }
    return kilobytes.at("VmHWM:") - kilobytes.at("RssFile:");
}

std::string AnswerAtOnce(BackendConnection& backend, const std::string& request) {
    backend.SendAtOnce(request);
    return backend.Read();
}

/// Exports one event with all its files.
void ExportEvent(BackendConnection& backend, const std::string& event) {
    const std::string attributes = " reid=\"" + event + "\" protocolVersion=\"2.0\"";
    const std::string description = AnswerAtOnce(backend, "<msg req=\"NEXT_EVENT\"" + attributes + "/>");
    ASSERT_EQ(Message::Parse(description).Name(), "EVENT");
    for (int file = 0; file < kFiles; ++file) {
        const std::string answer = AnswerAtOnce(backend, GetFile(event, FileName(file)));
        ASSERT_NE(answer.find("FILE_COMPLETE"), std::string::npos) << answer;
    }
    ASSERT_NE(
        AnswerAtOnce(backend, "<msg req=\"EVENT_XFER_COMPLETE\"" + attributes + "/>").find("EVENT_XFER_ACK"),
        std::string::npos);
}

long BigRecordingsTest::Export(int events) const {
    long kilobytes = 0;
    const ProgramResult result =
        PlayDvr("2", [events, &kilobytes](BackendConnection& backend, pid_t process) {
            backend.Read();
            const Message list =
                Message::Parse(AnswerAtOnce(backend, R"(<msg req="GET_EVENT_LIST" protocolVersion="2.0"/>)"));
            int listed = 0;
            for (const pugi::xml_node event : list.Root().child("events").children()) {
                ASSERT_EQ(event.text().get(), EventName(listed++));
            }
            ASSERT_EQ(listed, kEvents);
            for (int event = 0; event < events; ++event) {
                ASSERT_NO_FATAL_FAILURE(ExportEvent(backend, EventName(event)));
            }
            kilobytes = PeakOf(process);
            backend.SendAtOnce(R"(<msg req="DONE" protocolVersion="2.0"/>)");
        });
    EXPECT_EQ(result.status, 0) << result.errors;
    return kilobytes;
}

TEST_F(BigRecordingsTest, AreExportedIn20InMemoryThatDoesNotGrow) {
    const long first = Export(1);
    const long many = Export(500);
    RecordProperty("kilobytes", std::to_string(many));
    if (kMemoryIsKnown) {
        EXPECT_LT(many, 3'000);
        EXPECT_LT(many, first + 500);
    }
}

TEST_F(BigRecordingsTest, AreDescribedIn10InAFewTimesTheMemoryOfTheOneMessage) {
    std::size_t bytes = 0;
    long kilobytes = 0;
    const ProgramResult result = PlayDvr("1", [&](BackendConnection& backend, pid_t process) {
        backend.Read();
        bytes = AnswerAtOnce(backend, R"(<msg req="GET_XML"/>)").size();
        const std::string answer =
            AnswerAtOnce(backend, "<msg req=\"GET_FILE\" path=\"" + EventName(kEvents - 1) + "\" file=\"" +
                                      FileName(kFiles - 1) + "\"/>");
        ASSERT_NE(answer.find("FILE_COMPLETE"), std::string::npos) << answer;
        kilobytes = PeakOf(process);
    });
    EXPECT_NE(result.output.find("not finished: exported 0 of 10000 events, 1 file, 9 bytes"),
              std::string::npos);
    EXPECT_GT(bytes, 5'000'000U);
    RecordProperty("kilobytes", std::to_string(kilobytes));
    if (kMemoryIsKnown) {
        EXPECT_LT(kilobytes, 40'000);
    }
}

}  // namespace
