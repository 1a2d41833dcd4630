#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/log/RunReader.h"

namespace rig::log {
namespace {

/// @return the request that the last of these lines shows
Request RequestAfter(const std::vector<std::string>& lines) {
    RunReader reader;
    for (const std::string& text : lines) {
        const std::string line = "velloran:1 " + text;
        reader.Add(*ReadStatement(line));
    }
    return reader.LastRequest();
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

}  // namespace
}  // namespace rig::log
