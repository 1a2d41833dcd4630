#include <tinyxml.h>

#include <fstream>
#include <string>

#include "protocol/Message.h"
#include "protocol/v1_0/VelProtocol_1_0.h"
#include "protocol/v2_0/VelProtocol_2_0.h"
#include "tests/harness/unit/support/HarnessTest.h"

namespace {

const char* HandleMessageOf(const VelProtocol_1_0&) {
    return "virtual VelProtocolBase::e_MsgReturn VelProtocol_1_0::HandleMessage()";
}

const char* HandleMessageOf(const VelProtocol_2_0&) {
    return "virtual VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage()";
}

/// What all received messages have in common, in either dialect.
template <typename T>
class Envelope : public HarnessTest {
 protected:
    VelProtocolBase::e_MsgReturn Handle(const std::string& text) {
        Feed(text);
        return protocol.HandleMessage();
    }

    void ExpectUnsupported(const std::string& text, const std::string& req) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Handle(text), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(text), Logged(1, "UNSUPPORTED MSG RECEIVED: " + req));
    }

    T protocol{TestOptions(), kSocket};
};
using Dialects = ::testing::Types<VelProtocol_1_0, VelProtocol_2_0>;
TYPED_TEST_SUITE(Envelope, Dialects);

TYPED_TEST(Envelope, ReportsAMsgWithoutReq) {
    for (const std::string text : {"<msg />", "<msg reid=\"OK\" />", "<msg REQ=\"OK\" />", "<msg>OK</msg>"}) {
        EXPECT_EQ(this->Handle(text), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(text), Logged(1, "INVALID XML RECEIVED"));
    }
}

TYPED_TEST(Envelope, ReportsAReqThatItDoesNotKnow) {
    for (const std::string req :
         {"", "HELLO", "O", "OKAY", "OK ", " OK", "EVENT_", "EVEN", "EVENTS", "EVENT_LISTS", "FILE_COMPLETED",
          "EVENT_XFER_AC", "INVALID_EVENTS", "XFER_IN_PROGRES"}) {
        this->ExpectUnsupported("<msg req=\"" + req + "\" />", req);
    }
}

TYPED_TEST(Envelope, ReportsAReqInAnotherLetterCase) {
    for (const std::string req : {"ok", "Ok", "file_complete", "event_list", "xml"}) {
        this->ExpectUnsupported("<msg req=\"" + req + "\" />", req);
    }
}

TYPED_TEST(Envelope, ReportsAReqThatTheHarnessItselfSends) {
    for (const std::string req :
         {"GET_XML", "GET_EVENT_LIST", "NEXT_EVENT", "GET_FILE", "EVENT_XFER_COMPLETE", "DONE",
          "UPDATE_CONFIGURATION", "UPDATE_SOFTWARE", "CONFIGURATION_UPDATE"}) {
        this->ExpectUnsupported("<msg req=\"" + req + "\" />", req);
    }
}

TYPED_TEST(Envelope, ReportsAReqWithItsEntitiesResolved) {
    this->ExpectUnsupported("<msg req=\"&lt;O&amp;K&gt;\" />", "<O&K>");
}

TYPED_TEST(Envelope, EndsTheProcessWithoutALineWhenThereIsNoMsg) {
    for (const std::string text : {"<message req=\"OK\" />", "<MSG req=\"OK\" />", "<?xml version=\"1.0\" ?>",
                                   "<!-- OK -->", "<list><msg req=\"OK\" /></list>"}) {
        EXPECT_ABORT(this->Handle(text), Received(text));
    }
}

TYPED_TEST(Envelope, TakesACommentThatReadsMsgForTheMsg) {
    const std::string text = "<!--msg--><msg req=\"hello\" />";
    EXPECT_ABORT(this->Handle(text), Received(text));
}

TYPED_TEST(Envelope, TakesTheFirstMsgWhateverStandsAroundIt) {
    for (const std::string text :
         {"<?xml version=\"1.0\"?>\n<!-- msg --><msg req='hello'/>", "<note req=\"OK\"/><msg req=\"hello\"/>",
          "<msg req=\"hello\"/><msg req=\"OK\"/>", "<msg req=\"hello\"/><!--msg-->",
          "\n  <msg\n  a='1'\n  req='hello' >text<x/></msg>\n", "\xef\xbb\xbf<msg req=\"hello\"/>"}) {
        this->ExpectUnsupported(text, "hello");
    }
}

TYPED_TEST(Envelope, ReadsTheTextUpToItsFirstNul) {
    this->ExpectUnsupported(std::string("<msg req=\"hello\"/>") + '\0' + "<<<", "hello");
}

TYPED_TEST(Envelope, EndsTheProcessOnATextThatIsNoXml) {
    const struct {
        std::string text;
        std::string error;
        std::string row;
    } cases[] = {{"<a></b>", "error: 1:Error reading end tag.", "row: 1:4"},
                 {"\n\n <msg req=\"x\"><a>\n</b></msg>", "error: 1:Error reading end tag.", "row: 4:1"},
                 {"<msg", "error: 1:Failed to read Element name", "row: 1:2"},
                 {"<msg req='1' req='2'/>", "error: 1:Error parsing Element.", "row: 1:14"},
                 {"<msg req=\"OK\"", "error: 1:Error parsing Element.", "row: 1:6"},
                 {"<msg req=\"OK\">", "error: 1:Error reading Element value.", "row: 0:0"},
                 {"<msg req=\"OK\"/><open>", "error: 1:Error reading Element value.", "row: 0:0"},
                 {"hello", "error: 1:Error document empty.", "row: 0:0"},
                 {"", "error: 1:Error document empty.", "row: 0:0"}};
    for (const auto& [text, error, row] : cases) {
        SCOPED_TRACE(text);
        EXPECT_ABORT(this->Handle(text), Received(text), Logged(1, error), Logged(1, row),
                     AssertionFailed(HandleMessageOf(this->protocol), "not incomingMessage.Error()"));
    }
}

TYPED_TEST(Envelope, EndsTheProcessOnATextThatIsNoXmlWhateverIsLogged) {
    for (const unsigned int mask : kMasks) {
        this->LogMask(mask);
        EXPECT_ABORT(this->Handle("<a></b>"), Received("<a></b>"),
                     Logged(1, "error: 1:Error reading end tag."), Logged(1, "row: 1:4"),
                     AssertionFailed(HandleMessageOf(this->protocol), "not incomingMessage.Error()"));
    }
}

TYPED_TEST(Envelope, ReadsExactlyOneFrameACall) {
    Feed("<msg req=\"first\"/>");
    Feed("<msg req=\"second\"/>");
    EXPECT_EQ(this->protocol.HandleMessage(), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received("<msg req=\"first\"/>"), Logged(1, "UNSUPPORTED MSG RECEIVED: first"));
    EXPECT_EQ(this->protocol.HandleMessage(), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received("<msg req=\"second\"/>"), Logged(1, "UNSUPPORTED MSG RECEIVED: second"));
}

TYPED_TEST(Envelope, LogsTheLineNumberOfTheStatementItself) {
    this->Handle("<msg />");
    const std::vector<std::string> lines = RawLogLines();
    ASSERT_EQ(lines.front().substr(0, 9), "velloran:");
    std::ifstream source(PROTOCOL_SOURCES "/Framing.cpp");
    std::string statement;
    for (int count = std::stoi(lines.front().substr(9)); count > 0; --count) {
        ASSERT_TRUE(std::getline(source, statement));
    }
    EXPECT_NE(statement.find("\"expecting a message of \""), std::string::npos) << statement;
    TakeJournal();
}

class OlderReceiver : public Envelope<VelProtocol_1_0> {};

TEST_F(OlderReceiver, DoesNotKnowTheMessagesOfTheNewerDialect) {
    for (const std::string req : {"EVENT_LIST", "EVENT", "EVENT_XFER_ACK", "INVALID_EVENT",
                                  "TRANSPORT_EXCEPTION", "XFER_IN_PROGRESS", "SOFTWARE_UPDATE_CONFIRM"}) {
        ExpectUnsupported("<msg req=\"" + req + "\" protocolVersion=\"2.0\" />", req);
    }
}

class NewerReceiver : public Envelope<VelProtocol_2_0> {};

TEST_F(NewerReceiver, DoesNotKnowTheXmlMessageOfTheOlderDialect) {
    ExpectUnsupported("<msg req=\"XML\" />", "XML");
}

class MessageHelpers : public HarnessTest {};

TEST_F(MessageHelpers, AnAttributeOfAMissingMsgIsMissing) {
    TiXmlDocument document;
    EXPECT_EQ(MsgAttribute(document, "reid"), nullptr);
    document.Parse("<message reid=\"E1\" />");
    EXPECT_EQ(MsgAttribute(document, "reid"), nullptr);
}

TEST_F(MessageHelpers, AnEmptyAttributeIsNotMissing) {
    TiXmlDocument document;
    document.Parse("<msg reid=\"\" />");
    EXPECT_STREQ(MsgAttribute(document, "reid"), "");
    EXPECT_EQ(MsgAttribute(document, "file"), nullptr);
}

TEST_F(MessageHelpers, AMessageBuiltHoldsNothingButItsMsg) {
    TiXmlDocument document;
    AddMsg(document, "DONE")->SetAttribute("a", "b");
    std::string text;
    text << document;
    EXPECT_EQ(text, "<msg req=\"DONE\" a=\"b\" />");
}

TYPED_TEST(Envelope, LeavesTheEncodingToTheXmlLibrary) {
    const std::string msg = "<msg req=\"a&#233;b\" />";
    const std::string latin1 =
        "a\xe9"
        "b";
    const std::string utf8 =
        "a\xc3\xa9"
        "b";
    const std::pair<std::string, std::string> cases[] = {
        {msg, latin1},  // nothing says which
        {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + msg, latin1},
        {"<?xml version=\"1.0\"?>" + msg, utf8},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + msg, utf8},
        {"\xef\xbb\xbf" + msg, utf8}};
    for (const auto& [text, req] : cases) {
        this->ExpectUnsupported(text, req);
    }
}

TYPED_TEST(Envelope, CountsColumnsAsTheXmlLibraryDoes) {
    const std::pair<std::string, std::string> cases[] = {{"\t<msg req='x' <", "row: 1:18"},
                                                         {"<msg req='\xc3\xa9' <", "row: 1:15"},
                                                         {"\xef\xbb\xbf<msg req='\xc3\xa9' <", "row: 1:14"}};
    for (const auto& [text, row] : cases) {
        EXPECT_ABORT(this->Handle(text), Received(text), Logged(1, "error: 1:Error reading Attributes."),
                     Logged(1, row),
                     AssertionFailed(HandleMessageOf(this->protocol), "not incomingMessage.Error()"));
    }
}

}  // namespace
