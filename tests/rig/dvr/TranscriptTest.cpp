#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "rig/dvr/wire/Transcript.h"

namespace {

using rig::dvr::Message;
using rig::dvr::Summarize;
using rig::dvr::Transcript;

std::string WithoutDigits(std::string text) {
    for (char& byte : text) {
        byte = byte >= '0' && byte <= '9' ? '#' : byte;
    }
    return text;
}

TEST(Transcript, NamesAMessageAndTheFieldsThatMatter) {
    EXPECT_EQ(Summarize(Message::Parse(
                  R"(<msg req="GET_FILE" reid="E 1" path="E 1" file="a" protocolVersion="2.0"/>)")),
              R"(GET_FILE reid="E 1" file="a")");
}

TEST(Transcript, ShowsAPathThatSaysMoreThanTheReid) {
    EXPECT_EQ(Summarize(Message::Parse(R"(<msg req="GET_FILE" path="E1" file="a"/>)")),
              R"(GET_FILE path="E1" file="a")");
    EXPECT_EQ(Summarize(Message::Parse(R"(<msg req="GET_FILE" reid="E1" path="E2" file="a"/>)")),
              R"(GET_FILE reid="E1" path="E2" file="a")");
}

TEST(Transcript, CountsWhatAMessageHolds) {
    EXPECT_EQ(Summarize(Message::Parse(
                  R"(<msg req="EVENT_LIST"><events><event>a</event><event>b</event></events></msg>)")),
              "EVENT_LIST (events: 2)");
    EXPECT_EQ(Summarize(Message::Parse(R"(<msg req="EVENT" reid="a"><xmlFile>12345</xmlFile></msg>)")),
              R"(EVENT reid="a" (xmlFile: 5 bytes))");
}

TEST(Transcript, StaysOnOneLineWhateverAPeerSends) {
    EXPECT_EQ(Summarize(Message::Parse("<msg req=\"A&#10;B\" reid=\"&#27;[2J\"/>")),
              "A\\nB reid=\"\\x1b[2J\"");
    EXPECT_EQ(Summarize(Message::Parse("<msg req=\"A\" reid=\"" + std::string(101, 'x') + "\"/>")),
              "A reid=\"" + std::string(100, 'x') + "...\"");
}

TEST(Transcript, MarksDirectionsAndTimes) {
    std::ostringstream out;
    Transcript transcript(out, false);
    transcript.Sent(Message("OK"));
    transcript.Received(Message("GET_XML"));
    transcript.Note("a note\n");
    EXPECT_EQ(WithoutDigits(out.str()),
              "    #.### -> OK\n"
              "    #.### <- GET_XML\n"
              "    #.### a note\\n\n");
}

TEST(Transcript, OverwritesItsLastLineWithTheProgressOnATerminal) {
    std::ostringstream out;
    {
        Transcript transcript(out, true);
        transcript.Progress("a.ts", 0, 1'000'000);
        transcript.Progress("a.ts", 500'000, 1'000'000);
        transcript.Note("a note");
    }
    EXPECT_EQ(WithoutDigits(out.str()),
              "\r\033[Ka.ts [>                   ]   # %  #.# of #.# MB"
              "\r\033[Ka.ts [==========>         ]  ## %  #.# of #.# MB"
              "\r\033[K    #.### \033[#ma note\033[#m\n");
}

TEST(Transcript, LeavesNoProgress) {
    std::ostringstream out;
    Transcript(out, true).Progress("a.ts", 0, 1'000'000);
    const std::string end = "\r\033[K";
    ASSERT_GT(out.str().size(), 2 * end.size());
    EXPECT_EQ(out.str().substr(out.str().size() - end.size()), end);
}

TEST(Transcript, ShowsNoProgressWithoutATerminal) {
    std::ostringstream out;
    Transcript(out, false).Progress("a.ts", 500'000, 1'000'000);
    EXPECT_EQ(out.str(), "");
}

TEST(Transcript, IsColouredOnlyWhenAsked) {
    std::ostringstream plain;
    Transcript(plain, false).Sent(Message("OK"));
    EXPECT_EQ(plain.str().find('\033'), std::string::npos);
    std::ostringstream coloured;
    Transcript(coloured, true).Sent(Message("OK"));
    EXPECT_NE(coloured.str().find("\033[36m-> OK\033[0m\n"), std::string::npos) << coloured.str();
}

}  // namespace
