#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

class GET_FILE : public Dialogue {};

TEST_F(GET_FILE, NamesTheEventTwiceAndTheFileOnce) {
    VelProtocolBase::FileEntry file("E1", "a.mpg");
    protocol.SendFileRequest(file, false);
    EXPECT_JOURNAL(Sent(R"(<msg req="GET_FILE" reid="E1" path="E1" file="a.mpg" protocolVersion="2.0" />)"));
    EXPECT_TRUE(protocol.fileRequestPending);
    EXPECT_TRUE(protocol.filesToReceive.empty());
}

TEST_F(GET_FILE, AsksForANewHashLast) {
    VelProtocolBase::FileEntry file("E1", "a.mpg");
    protocol.SendFileRequest(file, true);
    EXPECT_JOURNAL(Sent(
        R"(<msg req="GET_FILE" reid="E1" path="E1" file="a.mpg" protocolVersion="2.0" rehash="true" />)"));
    EXPECT_TRUE(protocol.fileRequestPending);
    EXPECT_FALSE(protocol.rehashPending);
}

TEST_F(GET_FILE, EscapesItsNames) {
    VelProtocolBase::FileEntry file("<E&1>", "\"a\"");
    protocol.SendFileRequest(file, false);
    EXPECT_JOURNAL(Sent(R"(<msg req="GET_FILE" reid="&lt;E&amp;1&gt;" path="&lt;E&amp;1&gt;" )"
                        R"(file='&quot;a&quot;' protocolVersion="2.0" />)"));
}

TEST_F(GET_FILE, CarriesEmptyNames) {
    VelProtocolBase::FileEntry file;
    protocol.SendFileRequest(file, false);
    EXPECT_JOURNAL(Sent(R"(<msg req="GET_FILE" reid="" path="" file="" protocolVersion="2.0" />)"));
}

TEST_F(GET_FILE, AnnouncesAWrongSizeWhenTheSizeErrorIsOn) {
    protocol.sizeError = true;
    VelProtocolBase::FileEntry file("E1", "a");
    protocol.SendFileRequest(file, false);
    EXPECT_JOURNAL(SentWithSizeError(GetFile("E1", "a")));
}

}  // namespace
