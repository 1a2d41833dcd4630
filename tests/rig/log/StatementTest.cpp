#include <gtest/gtest.h>

#include <string>

#include "rig/base/Printable.h"
#include "rig/log/Statement.h"

namespace rig::log {
namespace {

TEST(Statement, OfOurLoggerHasTimeLevelAndText) {
    const auto line = ReadStatement("2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_EQ(line->level, 16);
    EXPECT_EQ(line->time, 1795183387123456);
    EXPECT_FALSE(line->process);
}

TEST(Statement, OfSyslogHasProcessAndTime) {
    const auto line = ReadStatement("Nov  2 00:00:01 rig velloran[212]: velloran:81 Sending DONE");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_EQ(line->process, 212);
    EXPECT_EQ(line->time, (305LL * 24 * 3600 + 1) * 1000000);
}

TEST(Statement, OfTheJournalIsReducedToUtc) {
    for (const char* time : {"2026-11-20T15:03:07.123456+0100", "2026-11-20T15:03:07.123456+01:00",
                             "2026-11-20T09:33:07.123456-0430", "2026-11-20T14:03:07.123456"}) {
        const std::string text = std::string(time) + " rig velloran[212]: velloran:99 hdr[0]= 28";
        const auto line = ReadStatement(text);
        ASSERT_TRUE(line);
        EXPECT_EQ(line->text, "hdr[0]= 28");
        EXPECT_EQ(line->process, 212);
        EXPECT_EQ(line->time, 1795183387123456) << time;
    }
}

TEST(Statement, HasNoTimeIfItIsMalformed) {
    for (const char* time : {"2026-13-20T14:03:07Z", "2026-11-20T14.03.07Z", "Nov x 14:03:07", "T", "7"}) {
        const std::string text = std::string(time) + " velloran:1 x";
        const auto line = ReadStatement(text);
        ASSERT_TRUE(line) << time;
        EXPECT_EQ(line->time, std::nullopt) << time;
    }
}

TEST(Statement, KeepsTheBlanksOfItsText) {
    EXPECT_EQ(ReadStatement("velloran:1  two blanks ")->text, " two blanks ");
}

TEST(Statement, NeedsNoPrefix) {
    const auto line = ReadStatement("velloran:81 Sending DONE\r");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_FALSE(line->time);
}

TEST(Statement, EndsItsPrefixAtTheFirstSource) {
    const auto line = ReadStatement("velloran:9 UNSUPPORTED MSG RECEIVED: velloran:1 shutting down");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "UNSUPPORTED MSG RECEIVED: velloran:1 shutting down");
}

class NotALogLine : public testing::TestWithParam<const char*> {};

TEST_P(NotALogLine, IsIgnored) {
    EXPECT_FALSE(ReadStatement(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(OfOthers, NotALogLine,
                         testing::Values("", "velloran", "velloran:", "velloran: 5", "velloran:12",
                                         "velloran:x Sending DONE", "xvelloran:12 y",
                                         "Nov 20 14:03:07 rig other[7]: Sending DONE", "2026-11-20T",
                                         "\xff\xfe\x01"));

TEST(Unescaped, UndoesTheLoggersEscapes) {
    EXPECT_EQ(Unescaped(R"(a\\b\nc\rd\te\x01f\x7f)"),
              "a\\b\nc\rd\te\x01"
              "f\x7f");
}

TEST(Unescaped, LeavesOtherBackslashes) {
    EXPECT_EQ(Unescaped(R"(\q \x \x1 \xZZ \)"), R"(\q \x \x1 \xZZ \)");
}

TEST(Unescaped, RestoresEveryEscapedByte) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(Unescaped(Printable(bytes)), bytes);
}

}  // namespace
}  // namespace rig::log
