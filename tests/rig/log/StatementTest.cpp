#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "rig/base/Printable.h"
#include "rig/log/OwnLine.h"
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

/// It has a way of its own, which is the faster one.
TEST(Statement, OfOurLoggerIsReadFromFixedPlaces) {
    struct Row {
        std::string line;
        std::int64_t time;
        int level;
        std::string text;
    };
    for (const Row& row :
         {Row{"2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE", 1795183387123456, 16,
              "Sending DONE"},
          Row{"2026-11-20T14:03:00.000000Z velloran 999999999 velloran:1 ", 1795183380000000, 999999999, ""},
          Row{"2026-11-20T14:03:59.990000Z velloran 1 velloran:9 x", 1795183439990000, 1, "x"},
          Row{"2026-11-20T14:04:00.009900Z velloran 1 velloran:10 x", 1795183440009900, 1, "x"}}) {
        Statement statement;
        ASSERT_TRUE(ReadOwnLine(row.line, statement)) << row.line;
        EXPECT_EQ(statement.time, row.time) << row.line;
        EXPECT_EQ(statement.level, row.level) << row.line;
        EXPECT_EQ(statement.text, row.text) << row.line;
    }
}

TEST(Statement, OfAnotherLoggerIsNotReadFromFixedPlaces) {
    for (const std::string line : {"", "2026-11-20T14:03:07.123456", "2026-11-20T14:03:07.123456Z velloran",
                                   "2026-11-20T14:03:07.123456Z velloran 0 velloran:1 x",
                                   "2026-11-20T14:03:07.123456Z velloran 1000000000 velloran:1 x",
                                   "2026-11-20T14:03:07.123456Z velloran 1 velloran: x",
                                   "2026-11-20T14:03:07.123456Z velloran 1 velloran:1",
                                   "2026-11-20T14:03:07.123456Z velloran 1 other:1 x",
                                   "2026-11-20T14:03:07.123456+01:00 velloran 1 velloran:1 x",
                                   "2026-11-20T14:03:07,123456Z velloran 1 velloran:1 x",
                                   "2026-11-20T14:03:0x.123456Z velloran 1 velloran:1 x",
                                   "2026-11-20T14:03:07.x23456Z velloran 1 velloran:1 x",
                                   "2026-11-20T14:03:07.12x456Z velloran 1 velloran:1 x",
                                   "2026-11-20T14:03:07.1234x6Z velloran 1 velloran:1 x",
                                   "2026-11-20T14:03:07.12345xZ velloran 1 velloran:1 x",
                                   "2026-13-20T14:03:07.123456Z velloran 1 velloran:1 x"}) {
        Statement statement;
        EXPECT_FALSE(ReadOwnLine(line, statement)) << line;
    }
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

/// @return all that is read of a line: "TIME PROCESS LEVEL NUMBER [BEGINNING][DETAIL]"
std::string PartsOf(const std::string& line) {
    const auto statement = ReadStatement(line);
    if (!statement) {
        return "nothing";
    }
    const std::string_view beginning =
        statement->text.substr(0, statement->text.size() - statement->detail.size());
    const auto number = [](const auto& value) { return value ? std::to_string(*value) : "-"; };
    return number(statement->time) + " " + number(statement->process) + " " + number(statement->level) + " " +
           std::to_string(statement->Number()) + " [" + std::string(beginning) + "][" +
           std::string(statement->detail) + "]";
}

struct OddLine {
    std::string line;
    const char* parts;
};

TEST(Statement, IsReadOutOfOddLines) {
    const std::string own = "2026-11-20T14:03:07.123456Z velloran ";
    const std::vector<OddLine> lines = {
        {"velloran:1 x", "- - - 0 [][x]"},
        {"velloran:9 filesToReceive size = 12", "- - - 12 [filesToReceive size = ][12]"},
        {"velloran:0 x", "- - - 0 [][x]"},
        {"velloran:10 hdr[0]= 5", "- - - 0 [hdr[][0]= 5]"},
        {" velloran:1 x", "- - - 0 [][x]"},
        {"\tvelloran:1 x", "- - - 0 [][x]"},
        {":velloran:1 x", "- - - 0 [][x]"},
        {"-velloran:1 x", "nothing"},
        {"velloran:1  filesToReceive size = 3", "- - - 0 [][ filesToReceive size = 3]"},
        {"velloran: velloran:2 x", "- - - 0 [][x]"},
        {"velloran:1x velloran:2 y", "- - - 0 [][y]"},
        {"velloran:1\tx", "nothing"},
        {"velloran:1 ", "- - - 0 [][]"},
        {"velloran:1", "nothing"},
        {"velloran:1 filesToReceive size = -7 left", "- - - -7 [filesToReceive size = ][-7 left]"},
        {"velloran:1 filesToReceive size = x", "- - - 0 [filesToReceive size = ][x]"},
        {"velloran:1 filesToReceive size = 99999999999999999999",
         "- - - 0 [filesToReceive size = ][99999999999999999999]"},
        {"velloran[1]: velloran[22]: velloran:1 x", "- 22 - 0 [][x]"},
        {"velloran[]: velloran:1 x", "- - - 0 [][x]"},
        {"velloran[x]: velloran:1 x", "- - - 0 [][x]"},
        {"velloran[99999999999]: velloran:1 x", "- - - 0 [][x]"},
        {"velloran 1 velloran 64 velloran:1 x", "- - 64 0 [][x]"},
        {"velloran[7] velloran 4 velloran:1 x", "- 7 4 0 [][x]"},
        {own + "16 velloran:212 Sending DONE", "1795183387123456 - 16 0 [Sending DONE][]"},
        {own + "16 velloran:212 Sending DONE\r", "1795183387123456 - 16 0 [Sending DONE][]"},
        {own + "16 velloran:212 Sending DONE\r\r", "1795183387123456 - 16 0 [Sending DONE][\r]"},
        {own + "0 velloran:212 x", "1795183387123456 - 0 0 [][x]"},
        {own + "-1 velloran:212 x", "1795183387123456 - -1 0 [][x]"},
        {own + "1 velloran:0 x", "1795183387123456 - 1 0 [][x]"},
        {own + "1 velloran:-5 x", "nothing"},
        {own + "1  velloran:5 x", "1795183387123456 - 1 0 [][x]"},
        {own + "1 velloran:5x", "nothing"},
        {own + "1 velloran:5", "nothing"},
        {own + "1 velloran:5 ", "1795183387123456 - 1 0 [][]"},
        {own + "x velloran:5 y", "1795183387123456 - - 0 [][y]"},
        {own + "99999999999 velloran:5 y", "1795183387123456 - - 0 [][y]"},
        {own + "1 other velloran:5 y", "1795183387123456 - 1 0 [][y]"},
        {"2026-11-20T14:03:07.12345xZ velloran 1 velloran:5 y", "1795183387123450 - 1 0 [][y]"},
        {"2026-11-20T14:03:07.12x456Z velloran 1 velloran:5 y", "1795183387120000 - 1 0 [][y]"},
        {"2026-11-20T14:03:07.1x3456Z velloran 1 velloran:5 y", "1795183387100000 - 1 0 [][y]"},
        {"2026-11-20T14:03:07,123456Z velloran 1 velloran:5 y", "1795183387000000 - 1 0 [][y]"},
        {"2026-11-20T14:03:x7.123456Z velloran 1 velloran:5 y", "- - 1 0 [][y]"},
        {"2026-11-20T14:03:0x.123456Z velloran 1 velloran:5 y", "- - 1 0 [][y]"},
        {"2026-11-20T14:04:60.123456Z velloran 1 velloran:5 y", "1795183500123456 - 1 0 [][y]"},
        {"2026-11-20T14-05:07.123456Z velloran 1 velloran:5 y", "- - 1 0 [][y]"},
        {"2026-11-20T14:05-07.123456Z velloran 1 velloran:5 y", "- - 1 0 [][y]"},
        {"2026-11-20 14:05:07.123456Z velloran 1 velloran:5 y", "1795183507123456 - 1 0 [][y]"},
        {"2026/11-20T14:05:07.123456Z velloran 1 velloran:5 y", "1795183507123456 - 1 0 [][y]"},
        {"2026-11/20T14:05:07.123456Z velloran 1 velloran:5 y", "1795183507123456 - 1 0 [][y]"},
        {"2026-12-31T23:59:59.999999Z velloran 1 velloran:5 y", "1798761599999999 - 1 0 [][y]"},
        {"2026-00-20T14:03:07.123456Z velloran 1 velloran:5 y", "- - 1 0 [][y]"},
        {"2026-13-20T14:03:07.123456Z velloran 1 velloran:5 y", "- - 1 0 [][y]"},
        {"1970-01-01T00:00:00.000000Z velloran 1 velloran:5 y", "0 - 1 0 [][y]"},
        {"2000-02-29T00:00:00.000000Z velloran 1 velloran:5 y", "951782400000000 - 1 0 [][y]"},
        {"2100-03-01T00:00:00.000000Z velloran 1 velloran:5 y", "4107542400000000 - 1 0 [][y]"},
        {"2024-12-31T10:20:30.654321Z velloran 1 velloran:5 y", "1735640430654321 - 1 0 [][y]"},
        {"2024-02-29T10:20:30.654321Z velloran 1 velloran:5 y", "1709202030654321 - 1 0 [][y]"},
        {"2023-03-01T10:20:30.654321Z velloran 1 velloran:5 y", "1677666030654321 - 1 0 [][y]"},
        {"2026-11-20T14:03:07.1Z velloran:1 x", "1795183387100000 - - 0 [][x]"},
        {"2026-11-20T14:03:07.1234567Z velloran:1 x", "1795183387123456 - - 0 [][x]"},
        {"2026-11-20T14:03:07.Z velloran:1 x", "1795183387000000 - - 0 [][x]"},
        {"2026-11-20T14:03:07Z velloran:1 x", "1795183387000000 - - 0 [][x]"},
        {"2026-11-20T14:03:07 velloran:1 x", "1795183387000000 - - 0 [][x]"},
        {"2026-11-20T14:03:07.5+01:30 velloran:1 x", "1795177987500000 - - 0 [][x]"},
        {"2026-11-20T14:03:07.5+0130 velloran:1 x", "1795177987500000 - - 0 [][x]"},
        {"2026-11-20T14:03:07.5-01:30 velloran:1 x", "1795188787500000 - - 0 [][x]"},
        {"2026-11-20T14:03:07+01 velloran:1 x", "1795179787000000 - - 0 [][x]"},
        {"2026-11-20T14:03:07+0 velloran:1 x", "1795183387000000 - - 0 [][x]"},
        {"2026-11-20T14:03:07+x1:30 velloran:1 x", "1795181587000000 - - 0 [][x]"},
        {"2026-11-20T14:03:0 velloran:1 x", "- - - 0 [][x]"},
        {"2026-11-20T14:03 velloran:1 x", "- - - 0 [][x]"},
        {"2026-11-20T14x03:07Z velloran:1 x", "- - - 0 [][x]"},
        {"2026-11-20T14:03x07Z velloran:1 x", "- - - 0 [][x]"},
        {"2026-11-20T1x:03:07Z velloran:1 x", "- - - 0 [][x]"},
        {"2026-11-20T14:0x:07Z velloran:1 x", "- - - 0 [][x]"},
        {"20x6-11-20T14:03:07Z velloran:1 x", "- - - 0 [][x]"},
        {"2026-1x-20T14:03:07Z velloran:1 x", "- - - 0 [][x]"},
        {"2026-11-2xT14:03:07Z velloran:1 x", "- - - 0 [][x]"},
        {"2026-01-20T14:03:07Z velloran:1 x", "1768917787000000 - - 0 [][x]"},
        {"2026-12-20T14:03:07Z velloran:1 x", "1797775387000000 - - 0 [][x]"},
        {"Jan  1 00:00:00 velloran:1 x", "0 - - 0 [][x]"},
        {"Jan 10 00:00:00 velloran:1 x", "777600000000 - - 0 [][x]"},
        {"Feb  1 00:00:01 velloran:1 x", "2678401000000 - - 0 [][x]"},
        {"Mar  1 00:01:00 velloran:1 x", "5097660000000 - - 0 [][x]"},
        {"Apr  1 01:00:00 velloran:1 x", "7779600000000 - - 0 [][x]"},
        {"May  1 23:59:59 velloran:1 x", "10454399000000 - - 0 [][x]"},
        {"Jun 30 00:00:00 velloran:1 x", "15552000000000 - - 0 [][x]"},
        {"Jul 31 00:00:00 velloran:1 x", "18230400000000 - - 0 [][x]"},
        {"Aug 31 00:00:00 velloran:1 x", "20908800000000 - - 0 [][x]"},
        {"Sep 30 00:00:00 velloran:1 x", "23500800000000 - - 0 [][x]"},
        {"Oct 31 00:00:00.25 velloran:1 x", "26179200250000 - - 0 [][x]"},
        {"Nov 30 00:00:00 velloran:1 x", "28771200000000 - - 0 [][x]"},
        {"Dec 31 23:59:59 velloran:1 x", "31535999000000 - - 0 [][x]"},
        {"Dec 31 23:59:5 velloran:1 x", "- - - 0 [][x]"},
        {"Dez 31 23:59:59 velloran:1 x", "- - - 0 [][x]"},
        {"Dec x1 23:59:59 velloran:1 x", "- - - 0 [][x]"},
        {"Dec  x 23:59:59 velloran:1 x", "- - - 0 [][x]"},
        {"Dec 31 23.59:59 velloran:1 x", "- - - 0 [][x]"},
        {"Dec 31 23:59.59 velloran:1 x", "- - - 0 [][x]"},
    };
    for (const OddLine& odd : lines) {
        EXPECT_EQ(PartsOf(odd.line), odd.parts) << odd.line;
    }
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
    EXPECT_EQ(Unescaped(R"(\xg1\x1g)"), R"(\xg1\x1g)");
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
