#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/rig/dvr/ScriptedExport.h"
#include "tests/support/TemporaryFolder.h"

// --segment, --gap, --rate and the progress bar, with the built program.
namespace {

using rig::dvr::Message;
using Arguments = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

/// A folder of recordings: one event with one file.
class PaceCommandTest : public testing::Test {
 protected:
    void Record(const std::string& file, std::size_t length) const {
        folder_.Write("E/" + file, std::string(length, 'x'));
    }

    TemporaryFolder folder_;
};

TEST_F(PaceCommandTest, MeetsASecondRequestAtARate) {
    Record("a", 50'000);
    const auto start = Clock::now();
    PlayDvr20({"--recordings", folder_.Path().string(), "--rate", "100000"}, [](BackendConnection& backend) {
        StartEvent(backend, "E");
        backend.Send(Request("GET_FILE", "E", "a").Text());
        EXPECT_EQ(Message::Parse(RequestOf(backend, Request("GET_FILE", "E", "a"))).Name(),
                  "XFER_IN_PROGRESS");
        EXPECT_EQ(Message::Parse(backend.Read()).Name(), "FILE_COMPLETE");
    });
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(PaceCommandTest, SendsInPiecesWithPauses) {
    const auto start = Clock::now();
    const ProgramResult result =
        PlayDvr20({"--segment", "10", "--gap", "20", "--defect", "double", "--on", "OK"},
                  [](BackendConnection& backend) {
                      EXPECT_EQ(backend.Read(),
                                R"(<msg req="OK" protocolVersion="2.0"/>)");  // 36 bytes with its prefix
                      EXPECT_EQ(backend.Read(), R"(<msg req="OK" protocolVersion="2.0"/>)");
                  });
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(2 * 3 * 20));
    EXPECT_EQ(result.status, 1) << result.errors;
}

/// Plays the transfer of front.ts at 100,000 bytes per second. @return what is on standard output
std::string OutputOfATransfer(const fs::path& recordings, const Arguments& environment, bool onTerminal) {
    return PlayDvr20({"--recordings", recordings.string(), "--rate", "100000"},
                     [](BackendConnection& backend) {
                         StartEvent(backend, "E");
                         RequestOf(backend, Request("GET_FILE", "E", "front.ts"));
                     },
                     {environment, onTerminal, nullptr, nullptr})
        .output;
}

TEST_F(PaceCommandTest, ShowsTheProgressOfALongTransferOnATerminal) {
    Record("front.ts", 100'000);
    const std::string output = OutputOfATransfer(folder_.Path(), {"TERM=xterm"}, true);
    EXPECT_NE(output.find("\r\033[Kfront.ts [>                   ]   0 %  0.0 of 0.1 MB"), std::string::npos)
        << output;
    EXPECT_NE(output.find("\r\033[Kfront.ts [=========="), std::string::npos) << output;
    EXPECT_NE(output.find("MB\r\033[K"), std::string::npos) << "the next line takes its place";
    EXPECT_EQ(output.find("MB\r\n"), std::string::npos) << output;
}

TEST_F(PaceCommandTest, ShowsNoProgressOfAShortTransfer) {
    Record("front.ts", 10'000);
    EXPECT_EQ(OutputOfATransfer(folder_.Path(), {"TERM=xterm"}, true).find(" MB"), std::string::npos);
}

TEST_F(PaceCommandTest, ShowsNoProgressIfNotWanted) {
    Record("front.ts", 60'000);
    for (const std::string& output :
         {OutputOfATransfer(folder_.Path(), {"TERM=xterm"}, false),
          OutputOfATransfer(folder_.Path(), {"TERM=dumb"}, true),
          OutputOfATransfer(folder_.Path(), {"TERM=xterm", "NO_COLOR=1"}, true)}) {
        EXPECT_NE(output.find("-> FILE_COMPLETE"), std::string::npos) << output;
        EXPECT_EQ(output.find(" MB"), std::string::npos) << output;
        EXPECT_EQ(output.find('\033'), std::string::npos) << output;
    }
}

}  // namespace
