#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "ScriptedExport.h"
#include "TemporaryFolder.h"

// --segment, --gap, --rate and the progress bar, with the built program.
namespace {

using rig::Message;
using Arguments = std::vector<std::string>;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

const std::string kMore = " (velloran-rig --help tells more)";

struct RefusedCase {
    const char* name;
    Arguments arguments;
    std::string errors;  // after "velloran-rig"
};

void PrintTo(const RefusedCase& tested, std::ostream* out) {
    *out << tested.name;
}

class RefusedPaceTest : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedPaceTest, EndsWithStatus2AndOneLineAndNothingSent) {
    Arguments arguments{"dvr"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const ProgramResult result = RunRig(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "velloran-rig" + GetParam().errors + "\n");
    EXPECT_EQ(result.output, "");
}

INSTANTIATE_TEST_SUITE_P(
    Command, RefusedPaceTest,
    testing::Values(RefusedCase{"RateZero",
                                {"--rate", "0"},
                                ": --rate: expected a number from 1 to 1000000000000, found '0'" + kMore},
                    RefusedCase{"RateNegative",
                                {"--rate", "-1"},
                                ": --rate: expected a number from 1 to 1000000000000, found '-1'" + kMore},
                    RefusedCase{"RateWithUnit",
                                {"--rate", "1M"},
                                ": --rate: expected a number from 1 to 1000000000000, found '1M'" + kMore},
                    RefusedCase{"RateAndTime",
                                {"--rate", "1", "--transfer-time", "1"},
                                ": --transfer-time excludes --rate" + kMore},
                    RefusedCase{"SegmentZero",
                                {"--segment", "0"},
                                ": --segment: expected a number from 1 to 1000000000, found '0'" + kMore},
                    RefusedCase{"GapTooLong",
                                {"--segment", "1", "--gap", "3600001"},
                                ": --gap: expected a number from 0 to 3600000, found '3600001'" + kMore},
                    RefusedCase{"GapWithoutSegment", {"--gap", "1"}, ": --gap requires --segment" + kMore}),
    [](const testing::TestParamInfo<RefusedCase>& tested) { return std::string(tested.param.name); });

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

/// Plays the transfer of front.ts at 100,000 bytes a second. @return what stands on standard output
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

TEST_F(PaceCommandTest, ShowsNoProgressWhereItIsNotWanted) {
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
