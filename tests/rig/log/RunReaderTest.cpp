#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/log/RunReader.h"

namespace rig::log {
namespace {

RunReader ReaderAfter(const std::vector<std::string>& lines) {
    RunReader reader;
    for (const std::string& text : lines) {
        const std::string line = "velloran:1 " + text;
        reader.Add(*ReadStatement(line));
    }
    return reader;
}

/// @return the request that the last of these lines shows
Request RequestAfter(const std::vector<std::string>& lines) {
    return ReaderAfter(lines).LastRequest();
}

/// A message of the DVR in one piece.
void Say(std::vector<std::string>& lines, const std::string& message) {
    lines.push_back(fmt::format("expecting a message of {} bytes", message.size()));
    lines.push_back(fmt::format("GetMessage:incoming message, bytes 1 to {}:{}", message.size(), message));
}

const std::vector<std::string> kAcknowledged = {
    "'protocol' option set to 2",
    "expecting a message of 15 bytes",
    "GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>",
    "got an OK, sending GET_EVENT_LIST",
    "hdr[0]= 35",
    "expecting a message of 36 bytes",
    "GetMessage:incoming message, bytes 1 to 36:<msg req=\"EVENT_XFER_ACK\" reid=\"E\"/>"};

TEST(RunReader, IsCertainOfARequestThatIsAnnounced) {
    std::vector<std::string> lines = kAcknowledged;
    lines.insert(lines.end(), {"Got EVENT_XFER_ACK for: reid='E'", "hdr[0]= 35"});
    EXPECT_TRUE(RequestAfter(lines).isCertain);
}

TEST(RunReader, IsNotCertainOfARequestByTheAnnouncementOfAnEarlierOne) {
    std::vector<std::string> lines = kAcknowledged;
    lines.emplace_back("hdr[0]= 35");
    EXPECT_FALSE(RequestAfter(lines).isCertain);
}

TEST(RunReader, KnowsTheDialectFromAMessageWhereTheSwitchesAreMissing) {
    const std::string text = "<msg req=\"OK\" protocolVersion=\"2.0\"/>";
    RunReader reader;
    EXPECT_EQ(reader.Echoed().protocol, 1);
    reader.Add(StatementOf("expecting a message of 37 bytes"));
    const std::string slice = "GetMessage:incoming message, bytes 1 to 37:" + text;
    reader.Add(StatementOf(slice));
    EXPECT_EQ(reader.Echoed().protocol, 2);
}

TEST(RunReader, TakesAtMostFiveBytesForTheLengthOfARequest) {
    std::vector<std::string> lines = kAcknowledged;
    lines.insert(lines.end(), {"hdr[0]= 81", "hdr[1]= 80", "hdr[2]= 80", "hdr[3]= 80", "hdr[4]= 81"});
    EXPECT_EQ(RequestAfter(lines).announced, 0x10000001U);
    EXPECT_FALSE(RequestAfter(lines).isAnnounced);
    lines.emplace_back("hdr[5]= 7e");
    EXPECT_EQ(RequestAfter(lines).announced, 0x10000001U);
}

TEST(RunReader, TakesASwitchAfterAConnectionForAnotherRun) {
    EXPECT_FALSE(ReaderAfter({"'rehash' flag set"}).StartsAnother(Sign::ProtocolSwitch));
    const RunReader reader = ReaderAfter({"Connected to: fam=2  127.0.0.1:60984"});
    EXPECT_TRUE(reader.StartsAnother(Sign::ProtocolSwitch));
    EXPECT_TRUE(reader.StartsAnother(Sign::Connected));
    EXPECT_FALSE(reader.StartsAnother(Sign::Expecting));
}

TEST(RunReader, TakesTheSecondTakenPortForTheEnd) {
    EXPECT_FALSE(ReaderAfter({"bind failed: Address already in use"}).HasEnded());
    EXPECT_TRUE(ReaderAfter({"bind failed: Address already in use", "bind failed: Address already in use"})
                    .HasEnded());
}

TEST(RunReader, HasNoListOfAMessageThatListsNothing) {
    std::vector<std::string> lines = {"'protocol' option set to 2"};
    Say(lines, "<msg req=\"EVENT_LIST\"><events><event>E</event></events></msg>");
    EXPECT_NE(ReaderAfter(lines).LastMessage().listed, nullptr);
    Say(lines, "<msg req=\"WEATHER\"/>");
    EXPECT_EQ(ReaderAfter(lines).LastMessage().listed, nullptr);
}

TEST(RunReader, KnowsTheEventInProgressUntilAMessage) {
    std::vector<std::string> lines = {"'protocol' option set to 2"};
    Say(lines, "<msg req=\"EVENT_LIST\"><events><event>E</event></events></msg>");
    EXPECT_EQ(ReaderAfter(lines).LastMessage().event, "");
    Say(lines, "<msg req=\"INVALID_EVENT\"/>");
    EXPECT_EQ(ReaderAfter(lines).LastMessage().event, "E");
}

/// What an earlier export asked for is not among the files of this one.
TEST(RunReader, ForgetsTheFilesOfAnEarlierExportInTheFirstDialect) {
    std::vector<std::string> lines = {"'protocol' option set to 1"};
    const auto describe = [&lines](const std::string& file) {
        Say(lines,
            "<msg req=\"XML\"><xmlFile><string>&lt;recording-event reid=\"E\"&gt;&lt;video&gt;&lt;metadata "
            "name=\"" +
                file + "\"/&gt;&lt;/video&gt;&lt;/recording-event&gt;</string></xmlFile></msg>");
    };
    describe("x");
    lines.emplace_back("Got FILE_COMPLETE for: reid=E  file=x");
    describe("abcx");
    lines.insert(lines.end(), {"processing 'invalidFile' option, cnt=1", "hdr[0]= 14"});
    EXPECT_EQ(RequestAfter(lines).file, "x");
    EXPECT_FALSE(RequestAfter(lines).isGenuine);
}

TEST(RunReader, TakesOneRequestForGenuineAndNotTheNext) {
    std::vector<std::string> lines = {"'protocol' option set to 2"};
    Say(lines, "<msg req=\"EVENT_LIST\"><events><event>abcE1</event><event>E1</event></events></msg>");
    lines.emplace_back("processing 'invalidEvent' option [event]");
    std::vector<std::string> later = lines;
    lines.emplace_back("hdr[0]= 14");
    EXPECT_TRUE(RequestAfter(lines).isGenuine);
    lines.emplace_back("hdr[0]= 14");
    EXPECT_FALSE(RequestAfter(lines).isGenuine);
    Say(later, "<msg req=\"INVALID_EVENT\"/>");
    later.emplace_back("hdr[0]= 14");
    EXPECT_FALSE(RequestAfter(later).isGenuine);
}

/// What was acknowledged is the event itself, not the damaged form of its identifier.
TEST(RunReader, ForgetsADamagedIdentifierOnceItIsAcknowledged) {
    std::vector<std::string> lines = {"'protocol' option set to 2"};
    Say(lines, "<msg req=\"EVENT_LIST\"><events><event>abcE1</event><event>xyzE1</event></events></msg>");
    lines.insert(lines.end(), {"processing 'invalidEvent' option [event]", "hdr[0]= 14"});
    Say(lines, "<msg req=\"EVENT_XFER_ACK\" reid=\"E1\"/>");
    lines.insert(lines.end(), {"Got EVENT_XFER_ACK for: reid='E1'", "Got EVENT_XFER_ACK for: reid='abcE1'",
                               "processing 'invalidEvent' option [event]", "hdr[0]= 14"});
    EXPECT_EQ(RequestAfter(lines).reid, "E1");
    EXPECT_FALSE(RequestAfter(lines).isGenuine);
}

TEST(RunReader, ComparesAMessageWithTheKnownOneBeforeIt) {
    std::vector<std::string> lines;
    Say(lines, "<msg req=\"OK\"/>");
    Say(lines, "<msg req=\"WEATHER\"/>");
    Say(lines, "<msg req=\"FAIR\"/>");
    EXPECT_FALSE(ReaderAfter(lines).LastMessage().isRepeated);
    Say(lines, "<msg req=\"OK\"/>");
    EXPECT_TRUE(ReaderAfter(lines).LastMessage().isRepeated);
}

TEST(RunReader, SeesAGapWhereASliceIsCut) {
    RunReader reader = ReaderAfter({"expecting a message of 15 bytes"});
    EXPECT_EQ(reader.Add(StatementOf("GetMessage:incoming message, bytes 1 to 15")), RunReader::Event::Gap);
    EXPECT_EQ(reader.Add(StatementOf("GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>")),
              RunReader::Event::Message);
}

TEST(RunReader, LeavesTheFilesOfAnExportThatIsOpenedAgain) {
    std::vector<std::string> lines = {"'protocol' option set to 1"};
    Say(lines,
        "<msg req=\"XML\"><xmlFile><string>&lt;recording-event reid=\"E\"&gt;&lt;video&gt;&lt;metadata "
        "name=\"a\"/&gt;&lt;/video&gt;&lt;/recording-event&gt;</string></xmlFile></msg>");
    Say(lines, "<msg req=\"OK\"/>");
    lines.insert(lines.end(), {"got an OK, sending GET_XML", "hdr[0]= 14", "hdr[0]= 14"});
    EXPECT_EQ(RequestAfter(lines).file, "a");
}

}  // namespace
}  // namespace rig::log
