#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "rig/judge/MessageList.h"

namespace rig::judge {
namespace {

using Texts = std::vector<std::string>;

/// @return what is printed of statements with these texts, the first of them in line 1
std::string Listed(const Texts& texts, const std::string& prefix = "velloran:1 ") {
    std::ostringstream out;
    MessageList list(out);
    std::uint64_t number = 0;
    for (const std::string& text : texts) {
        list.Add(++number, prefix + text);
    }
    list.Finish();
    return out.str();
}

TEST(MessageList, HasWhatEachSideSent) {
    EXPECT_EQ(Listed({"'protocol' option set to 1", "Connected to: fam=2  127.0.0.1:4000",
                      "expecting a message of 15 bytes", "read success:15",
                      "GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>",
                      "got an OK, sending GET_XML", "hdr[0]= 95", "hdr[1]= 1"}),
              "{\"line\":5,\"sender\":\"DVR\",\"text\":\"3c6d7367207265713d224f4b222f3e\"}\n"
              "{\"line\":7,\"sender\":\"harness\",\"announced\":149,\"name\":\"GET_XML\"}\n");
}

TEST(MessageList, NamesWhatTheLogStates) {
    EXPECT_EQ(Listed({"expecting a message of 2 bytes", "GetMessage:incoming message, bytes 1 to 2:\\\\<",
                      "calling SendFileRequest(E/f, true)", "hdr[0]= 5", "sent: size= 1/5/9  '<a/>'",
                      "Sending EVENT_XFER_COMPLETE", "HandleMessage: event = 'E'", "hdr[0]= 6"}),
              "{\"line\":2,\"sender\":\"DVR\",\"text\":\"5c3c\"}\n"
              "{\"line\":4,\"sender\":\"harness\",\"announced\":5,\"name\":\"GET_FILE\",\"file\":\"452f66\","
              "\"rehash\":true,\"text\":\"3c612f3e\"}\n"
              "{\"line\":8,\"sender\":\"harness\",\"announced\":6,\"name\":\"EVENT_XFER_COMPLETE\","
              "\"events\":[\"45\"]}\n");
}

TEST(MessageList, TakesNoTextFromALineThatIsCut) {
    const std::string request = "{\"line\":1,\"sender\":\"harness\",\"announced\":5";
    EXPECT_EQ(Listed({"hdr[0]= 5", "sent: size= 1/5/9  ''"}), request + ",\"text\":\"\"}\n");
    EXPECT_EQ(Listed({"hdr[0]= 5", "sent: size= 1/5/9  '"}), request + "}\n");
    EXPECT_EQ(Listed({"hdr[0]= 5", "sent: size= 1/5/9"}), request + "}\n");
}

TEST(MessageList, SaysWhereTheLogLacksAPart) {
    EXPECT_EQ(Listed({"hdr[1]= 5", "GetMessage:incoming message, bytes 801 to 1600:x"}),
              "{\"line\":1,\"sender\":\"harness\",\"isWhole\":false}\n"
              "{\"line\":2,\"sender\":\"DVR\",\"isWhole\":false}\n");
    EXPECT_EQ(Listed({"expecting a message of 9 bytes", "GetMessage:incoming message, bytes 1 to 9:<m"}),
              "{\"line\":2,\"sender\":\"DVR\",\"text\":\"3c6d\",\"isWhole\":false}\n");
}

TEST(MessageList, HasTheRequestBeforeAMessageOfWhichTheLengthIsLost) {
    EXPECT_EQ(Listed({"hdr[0]= 5", "GetMessage:incoming message, bytes 801 to 1600:x"}),
              "{\"line\":1,\"sender\":\"harness\",\"announced\":5}\n"
              "{\"line\":2,\"sender\":\"DVR\",\"isWhole\":false}\n");
}

TEST(MessageList, HasTheLastRequestOfEachRun) {
    EXPECT_EQ(
        Listed({"Connected to: fam=2  127.0.0.1:1", "hdr[0]= 5", "'protocol' option set to 1", "hdr[0]= 6"}),
        "{\"line\":2,\"sender\":\"harness\",\"announced\":5}\n"
        "{\"line\":4,\"sender\":\"harness\",\"announced\":6}\n");
}

TEST(MessageList, LeavesOutANameThatNothingTells) {
    EXPECT_EQ(Listed({"hdr[0]= 5"}), "{\"line\":1,\"sender\":\"harness\",\"announced\":5}\n");
}

TEST(MessageList, KeepsTheProcessesApart) {
    std::ostringstream out;
    MessageList list(out);
    list.Add(1, "velloran[7]: velloran:1 expecting a message of 1 bytes");
    list.Add(2, "velloran[8]: velloran:1 expecting a message of 1 bytes");
    list.Add(3, "velloran[7]: velloran:1 GetMessage:incoming message, bytes 1 to 1:a");
    list.Add(4, "velloran[8]: velloran:1 GetMessage:incoming message, bytes 1 to 1:b");
    EXPECT_EQ(out.str(),
              "{\"line\":3,\"sender\":\"DVR\",\"text\":\"61\"}\n"
              "{\"line\":4,\"sender\":\"DVR\",\"text\":\"62\"}\n");
}

TEST(MessageList, LeavesOutLinesOfOthers) {
    std::ostringstream out;
    MessageList list(out);
    EXPECT_FALSE(list.Add(1, "hdr[0]= 5"));
    EXPECT_TRUE(list.Add(2, "velloran:1 shutting down"));
    list.Finish();
    EXPECT_EQ(out.str(), "");
}

}  // namespace
}  // namespace rig::judge
