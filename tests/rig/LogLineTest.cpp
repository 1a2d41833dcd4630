#include <gtest/gtest.h>

#include <string>

#include "rig/dvr/LogLine.h"
#include "rig/dvr/Printable.h"

namespace {

using rig::LogTime;
using rig::ParseLogLine;

TEST(LogLine, IsReadFromStandardOutput) {
    const auto line = ParseLogLine("2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_EQ(line->process, "");
    EXPECT_EQ(line->time, LogTime(1795183387'123456));
}

TEST(LogLine, IsReadFromASyslogFile) {
    const auto line = ParseLogLine("Nov 20 14:03:07 rig velloran[212]: velloran:99 Sending DONE");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_EQ(line->process, "212");
    EXPECT_EQ(line->time, std::nullopt);
}

TEST(LogLine, IsReadFromTheJournal) {
    const auto line =
        ParseLogLine("2026-11-20T15:03:07.123456+0100 rig velloran[212]: velloran:99 hdr[0]= 28");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "hdr[0]= 28");
    EXPECT_EQ(line->process, "212");
    EXPECT_EQ(line->time, LogTime(1795183387'123456));
}

TEST(LogLine, IsReadWithoutAPrefix) {
    const auto line = ParseLogLine("velloran:1  two blanks ");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, " two blanks ");
}

TEST(LogLine, StartsAtTheFirstHead) {
    const auto line = ParseLogLine("x velloran:1 Got velloran:2 y");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Got velloran:2 y");
}

TEST(LogLine, IsNotWhatOthersWrite) {
    for (const char* other :
         {"", "velloran", "velloran:", "velloran:12", "velloran: 12 text", "xvelloran:12 text",
          "velloran: Framing.cpp:91: void f(): Assertion `x' failed.", "kernel: velloran[1] trap"}) {
        EXPECT_FALSE(ParseLogLine(other)) << other;
    }
}

TEST(LogLine, HasNoTimeThatIsNone) {
    for (const char* time : {"2026-11-20T14:03:07.5", "2026-11-20 14:03:07Z", "2026-13-20T14:03:07Z", "T"}) {
        const auto line = ParseLogLine(std::string(time) + " velloran:1 x");
        ASSERT_TRUE(line) << time;
        EXPECT_EQ(line->time, std::nullopt) << time;
    }
}

TEST(LogLine, ResolvesItsEscapes) {
    const auto line = ParseLogLine(R"(velloran:1 \\n \n\r\t \x00\x1f\x7f \xC3)"
                                   "\xc3");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, std::string("\\n \n\r\t \0\x1f\x7f \xc3\xc3", 13));
}

TEST(LogLine, KeepsWhatIsNoEscape) {
    for (const char* text : {R"(\)", R"(\q)", R"(a\x)", R"(\x1)", R"(\xg0)", R"(\x-1)"}) {
        EXPECT_EQ(rig::Unescape(text), text);
    }
}

TEST(LogLine, GivesEveryByteBack) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(rig::Unescape(rig::Printable(bytes)), bytes);
}

}  // namespace
