#include <gtest/gtest.h>

#include <cstdlib>
#include <iomanip>

#include "LogClient.h"
#include "SysLogMsg.h"
#include "protocol/Log.h"
#include "tests/harness/platform/Allocations.h"
#include "tests/harness/platform/Subject.h"

namespace {

/// The rule of the log's escapes, one byte at a time.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char character : text) {
        const int byte = static_cast<unsigned char>(character);
        char code[8];
        snprintf(code, sizeof code, "\\x%02x", static_cast<unsigned int>(byte));
        escaped += character == '\\'             ? "\\\\"
                   : character == '\n'           ? "\\n"
                   : character == '\r'           ? "\\r"
                   : character == '\t'           ? "\\t"
                   : byte < 0x20 or byte == 0x7f ? std::string(code)
                                                 : std::string(1, character);
    }
    return escaped;
}

/// @return what reaches standard output when the named process runs `code`
Outcome RunNamed(const std::function<void()>& code) {
    return RunSubject([&code] {
        LogClient::Instance()->ProcessName("velloran");
        code();
    });
}

TEST(LogLine, HoldsTimeProcessLevelAndText) {
    const Outcome outcome = RunNamed([] { Log(16, "velloran:212 Sending DONE"); });
    EXPECT_EQ(ShapeOf(outcome.output), "9999-99-99T99:99:99.999999Z velloran 99 velloran:999 Sending DONE\n");
    EXPECT_EQ(outcome.output.substr(26), "Z velloran 16 velloran:212 Sending DONE\n");
}

TEST(LogLine, NamesEachLevelInDecimal) {
    const Outcome outcome = RunNamed([] {
        for (const unsigned int level : {1U, 2U, 4U, 8U, 16U, 32U, 64U}) {
            Log(level, "text");
        }
    });
    ASSERT_EQ(outcome.writes.size(), 7U);
    for (std::size_t index = 0; index < 7; ++index) {
        const std::string end = "Z velloran " + std::to_string(1 << index) + " text\n";
        EXPECT_EQ(outcome.writes[index].substr(26), end);
    }
}

TEST(LogLine, NamesTheProcessThatTheStatementGives) {
    const Outcome outcome = RunNamed([] {
        const std::string other = "other";
        SysLogMsg().Log(1, other) << "text";
    });
    EXPECT_EQ(outcome.output.substr(26), "Z other 1 text\n");
}

TEST(LogLine, IsFormattedWithoutWhatTheLineBeforeHasSet) {
    const Outcome outcome = RunNamed([] {
        const std::string& name = LogClient::Instance()->ProcessName();
        SysLogMsg().Log(16, name) << std::hex << std::showbase << std::setfill('*') << std::setprecision(2)
                                  << 255 << std::setw(3);
        SysLogMsg().Log(16, name) << 255 << ' ' << 1.23456 << std::setw(4) << 1;
    });
    ASSERT_EQ(outcome.writes.size(), 2U);
    EXPECT_EQ(TextOf(outcome.writes[0]), "0xff");
    EXPECT_EQ(TextOf(outcome.writes[1]), "255 1.23456   1");
}

TEST(LogLine, StaysWholeWhenItsOwnPiecesLog) {
    const Outcome outcome = RunNamed([] {
        const auto inner = [] {
            Log(16, "inner");
            return 2;
        };
        SysLogMsg().Log(16, LogClient::Instance()->ProcessName()) << std::hex << 255 << ' ' << inner() << 17;
        Log(16, "next");
    });
    ASSERT_EQ(outcome.writes.size(), 3U);
    EXPECT_EQ(TextOf(outcome.writes[0]), "inner");
    EXPECT_EQ(TextOf(outcome.writes[1]), "ff 211");
    EXPECT_EQ(TextOf(outcome.writes[2]), "next");
}

TEST(LogLine, IsOneWriteHoweverManyPiecesAreStreamed) {
    const Outcome outcome = RunNamed([] {
        SysLogMsg().Log(16, LogClient::Instance()->ProcessName())
            << "velloran:" << 212 << " " << 'c' << -1 << true << 2U << "\n"
            << 1.5;
    });
    ASSERT_EQ(outcome.writes.size(), 1U);
    EXPECT_EQ(TextOf(outcome.output), "velloran:212 c-112\\n1.5");
}

TEST(LogLine, IsThereAsSoonAsItsStatementEnds) {
    const Outcome outcome = RunNamed([] {
        Log(16, "before the end");
        std::_Exit(0);
    });
    EXPECT_EQ(TextOf(outcome.output), "before the end");
}

TEST(LogLine, WithoutTextIsALineToo) {
    const Outcome outcome = RunNamed([] { Log(16, ""); });
    EXPECT_EQ(outcome.output.substr(26), "Z velloran 16 \n");
}

TEST(LogLine, EscapesEveryByteThatCouldBreakOrForgeALine) {
    const Outcome outcome = RunNamed([] {
        for (int byte = 0; byte < 256; ++byte) {
            Log(16, "<" + std::string(1, static_cast<char>(byte)) + ">");
        }
    });
    ASSERT_EQ(outcome.writes.size(), 256U);
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = "<" + Escaped(std::string(1, static_cast<char>(byte))) + ">";
        EXPECT_EQ(TextOf(outcome.writes[static_cast<std::size_t>(byte)]), text) << "byte " << byte;
    }
}

TEST(LogLine, WritesTheEscapesInLowerCase) {
    const Outcome outcome = RunNamed([] { Log(16, std::string("\0\a\x1b\x1f\x7f\\\n\r\t", 9)); });
    EXPECT_EQ(TextOf(outcome.output), "\\x00\\x07\\x1b\\x1f\\x7f\\\\\\n\\r\\t");
}

TEST(LogLine, EscapesBytesThatAreStreamedOneByOne) {
    const Outcome outcome =
        RunNamed([] { SysLogMsg().Log(16, LogClient::Instance()->ProcessName()) << '\n'
                                                                                << '\0' << 'c'; });
    EXPECT_EQ(TextOf(outcome.output), "\\n\\x00c");
}

TEST(LogLine, StaysOneLineWhenTheStatementEndsWithEndl) {
    const Outcome outcome =
        RunNamed([] { SysLogMsg().Log(16, LogClient::Instance()->ProcessName()) << "a" << std::endl; });
    ASSERT_EQ(outcome.writes.size(), 1U);
    EXPECT_EQ(TextOf(outcome.output), "a\\n");
}

TEST(LogLine, PassesUtf8AsItIs) {
    const Outcome outcome = RunNamed([] {
        Log(16,
            "Stra\xc3\x9f"
            "e \xe2\x82\xac");
    });
    EXPECT_EQ(TextOf(outcome.output),
              "Stra\xc3\x9f"
              "e \xe2\x82\xac");
}

TEST(LogLine, CannotBeForgedByAPeer) {
    const Outcome outcome =
        RunNamed([] { Log(16, "x\n2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE"); });
    ASSERT_EQ(outcome.writes.size(), 1U);
    EXPECT_EQ(TextOf(outcome.output),
              "x\\n2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE");
}

TEST(LogLine, DoesNotHandItsNumberFormatToTheNextLine) {
    const Outcome outcome = RunNamed([] {
        SysLogMsg().Log(64, LogClient::Instance()->ProcessName()) << std::hex << std::setfill('0') << 255;
        SysLogMsg().Log(64, LogClient::Instance()->ProcessName()) << std::setw(4) << 255;
    });
    ASSERT_EQ(outcome.writes.size(), 2U);
    EXPECT_EQ(TextOf(outcome.writes[0]), "ff");
    EXPECT_EQ(TextOf(outcome.writes[1]), " 255");
}

TEST(LogLine, IsWholeWhateverItsLength) {
    const Outcome outcome = RunNamed([] {
        for (std::size_t length = 0; length <= 9000; ++length) {
            Log(32, std::string(length, 'x') + "!");
        }
    });
    ASSERT_EQ(outcome.writes.size(), 9001U);
    for (std::size_t index = 0; index < outcome.writes.size(); ++index) {
        ASSERT_EQ(TextOf(outcome.writes[index]), std::string(index, 'x') + "!");
    }
}

TEST(LogLine, Of100kBIsWholeAndOneWrite) {
    std::string text;
    while (text.size() < 100000) {
        text += std::to_string(text.size()) + " ";
    }
    const Outcome outcome = RunNamed([&text] { Log(32, text); });
    ASSERT_EQ(outcome.writes.size(), 1U);
    EXPECT_EQ(TextOf(outcome.output), text);
}

TEST(LogLine, Of100kBIsWholeWhenEveryByteNeedsAnEscape) {
    const Outcome outcome = RunNamed([] { Log(32, std::string(100000, '\n')); });
    ASSERT_EQ(outcome.writes.size(), 1U);
    EXPECT_EQ(TextOf(outcome.output), Escaped(std::string(100000, '\n')));
}

TEST(LogLine, OfUsualLengthTakesNothingFromTheHeap) {
    const Outcome outcome = RunNamed([] {
        LogClient::Instance();
        const std::size_t before = AllocationCount();
        SysLogMsg().Log(16, LogClient::Instance()->ProcessName())
            << "velloran:" << 212 << " " << std::hex << 300 << " Sending DONE\n";
        Report(std::to_string(AllocationCount() - before));
    });
    EXPECT_EQ(outcome.report, "0");
}

TEST(LogStatement, IsWrittenExactlyWhenItsLevelIsOn) {
    for (const unsigned int level : {1U, 2U, 4U, 8U, 16U, 32U, 64U}) {
        const Outcome outcome = RunNamed([level] {
            LogClient::Instance()->Level(127 - level);
            VEL_LOG(level) << "off";
            LogClient::Instance()->Level(level);
            VEL_LOG(level) << "on";
        });
        ASSERT_EQ(outcome.writes.size(), 1U) << "level " << level;
        EXPECT_EQ(ShapeOf(TextOf(outcome.output)), "velloran:999 on");
    }
}

TEST(LogStatement, EvaluatesNothingWhileItsLevelIsOff) {
    const Outcome outcome = RunNamed([] {
        LogClient::Instance()->Level(126);
        int evaluations = 0;
        VEL_LOG(1) << ++evaluations;
        Report(std::to_string(evaluations));
    });
    EXPECT_EQ(outcome.report, "0");
    EXPECT_EQ(outcome.output, "");
}

}  // namespace
