#include <gtest/gtest.h>

#include "rig/judge/LogLine.h"
#include "rig/judge/Signs.h"

namespace rig::judge {
namespace {

TEST(LogLine, OfOurLoggerHasTimeLevelAndText) {
    const auto line = ParseLogLine("2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_EQ(line->level, 16);
    EXPECT_EQ(line->time, 1795183387123456);
    EXPECT_FALSE(line->process);
}

TEST(LogLine, OfSyslogHasProcessAndTime) {
    const auto line = ParseLogLine("Nov  2 00:00:01 rig velloran[212]: velloran:81 Sending DONE");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_EQ(line->process, 212);
    EXPECT_EQ(line->time, (305LL * 24 * 3600 + 1) * 1000000);
}

TEST(LogLine, NeedsNoPrefix) {
    const auto line = ParseLogLine("velloran:81 Sending DONE\r");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "Sending DONE");
    EXPECT_FALSE(line->time);
}

TEST(LogLine, EndsItsPrefixAtTheFirstSource) {
    const auto line = ParseLogLine("velloran:9 UNSUPPORTED MSG RECEIVED: velloran:1 shutting down");
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, "UNSUPPORTED MSG RECEIVED: velloran:1 shutting down");
}

class NoLogLine : public testing::TestWithParam<const char*> {};

TEST_P(NoLogLine, IsPassedOver) {
    EXPECT_FALSE(ParseLogLine(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(OfOthers, NoLogLine,
                         testing::Values("", "velloran", "velloran:", "velloran: 5", "velloran:12",
                                         "velloran:x Sending DONE", "xvelloran:12 y",
                                         "Nov 20 14:03:07 rig other[7]: Sending DONE", "2026-11-20T",
                                         "\xff\xfe\x01"));

TEST(Unescaped, TakesTheLoggersEscapesBack) {
    EXPECT_EQ(Unescaped(R"(a\\b\nc\rd\te\x01f\x7f)"),
              "a\\b\nc\rd\te\x01"
              "f\x7f");
}

TEST(Unescaped, LeavesWhatIsNoEscape) {
    EXPECT_EQ(Unescaped(R"(\q \x \x1 \xZZ \)"), R"(\q \x \x1 \xZZ \)");
}

TEST(Sign, IsToldByTheBeginningOfTheText) {
    EXPECT_EQ(SignOf("Sending DONE"), Sign::SendingDone);
    EXPECT_EQ(SignOf("read success:12"), Sign::None);
    EXPECT_EQ(SignOf("hdr[3]= ac"), Sign::HeaderByte);
    EXPECT_EQ(Behind(Sign::FilesLeft, "filesToReceive size = 4"), "4");
}

}  // namespace
}  // namespace rig::judge
