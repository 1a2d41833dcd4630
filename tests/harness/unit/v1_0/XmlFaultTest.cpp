#include <tinyxml.h>

#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

const Entries kNoName = Uncaught("std::logic_error", "basic_string::_M_construct null not valid");
const std::string kFunction = "void VelProtocol_1_0::Handle_XML_msg(TiXmlDocument&)";

/// Descriptions that the harness does not survive.
class XmlFault_1_0 : public Dialogue_1_0 {
 protected:
    /// Expects a description with that content of its recording-event, E1, to end the process.
    void ExpectMissingName(const std::string& content) {
        SCOPED_TRACE(content);
        const std::string xml =
            Xml({"<recording-event reid=\"E1\"><video>" + content + "</video></recording-event>"});
        EXPECT_ABORT(Handle(xml), Received(xml), FoundEvent("E1"), kNoName);
    }

    static Entry NoReid() { return Logged(2, "Found event with no REID"); }
};

TEST_F(XmlFault_1_0, EndsTheProcessOnADescriptionThatIsNoXml) {
    const struct {
        std::string description;
        std::string error;
        std::string row;
    } cases[] = {{"<a></b>", "error: 1:Error reading end tag.", "row: 1:4"},
                 {"<recording-event\n reid=\"E1\"><video>\n</recording-event>",
                  "error: 1:Error reading end tag.", "row: 1:36"},
                 {"no markup", "error: 1:Error document empty.", "row: 0:0"}};
    for (const auto& [description, error, row] : cases) {
        SCOPED_TRACE(description);
        const std::string xml = Xml({description});
        EXPECT_ABORT(Handle(xml), Received(xml), Logged(1, error), Logged(1, row),
                     AssertionFailed(kFunction, "not embmsg.Error()"));
    }
}

TEST_F(XmlFault_1_0, EndsTheProcessOnALaterDescriptionThatIsNoXml) {
    const std::string xml = Xml({Event("E1", "m1"), "<a></b>"});
    EXPECT_ABORT(Handle(xml), Received(xml), FoundEvent("E1"), Logged(1, "error: 1:Error reading end tag."),
                 Logged(1, "row: 1:4"), AssertionFailed(kFunction, "not embmsg.Error()"));
}

TEST_F(XmlFault_1_0, EndsTheProcessOnASiblingOfStringThatIsNoXml) {
    const std::string xml = XmlOf(String(Event("E1", "m1")) + "<note>two words</note>");
    EXPECT_ABORT(Handle(xml), Received(xml), FoundEvent("E1"), Logged(1, "error: 1:Error document empty."),
                 Logged(1, "row: 0:0"), AssertionFailed(kFunction, "not embmsg.Error()"));
}

TEST_F(XmlFault_1_0, EndsTheProcessOnADescriptionThatIsNoXmlWhateverIsLogged) {
    const std::string xml = Xml({"<a></b>"});
    for (const unsigned int mask : kMasks) {
        LogMask(mask);
        EXPECT_ABORT(Handle(xml), Received(xml), Logged(1, "error: 1:Error reading end tag."),
                     Logged(1, "row: 1:4"), AssertionFailed(kFunction, "not embmsg.Error()"));
    }
}

TEST_F(XmlFault_1_0, EndsTheProcessOnMetadataWithoutAName) {
    ExpectMissingName("<metadata />");
    ExpectMissingName("<metadata file=\"m\">m</metadata>");
}

TEST_F(XmlFault_1_0, EndsTheProcessOnAStreamFileWithoutAName) {
    ExpectMissingName("<streams><stream><f /></stream></streams>");
    ExpectMissingName(
        "<metadata name=\"m\" /><streams><stream><f name=\"a\" /><f Name=\"b\" /></stream></streams>");
    ExpectMissingName("<streams><stream /><other><f /></other></streams>");
}

TEST_F(XmlFault_1_0, EndsTheProcessOnACommentInAStream) {
    ExpectMissingName("<streams><stream><!-- c --></stream></streams>");
    ExpectMissingName("<streams><stream><f name=\"a\" /><!-- c --></stream></streams>");
}

TEST_F(XmlFault_1_0, EndsTheProcessOnTextInAStream) {
    ExpectMissingName("<streams><stream>text</stream></streams>");
    ExpectMissingName("<streams><stream><f name=\"a\" />text</stream></streams>");
}

TEST_F(XmlFault_1_0, AMissingNameIsALogicErrorToTheCaller) {
    TiXmlDocument document;
    document.Parse(
        Xml({"<recording-event reid=\"E1\"><video><metadata/></video></recording-event>"}).c_str());
    try {
        protocol.Handle_XML_msg(document);
        ADD_FAILURE() << "came back";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
    }
    EXPECT_JOURNAL(FoundEvent("E1"));
    EXPECT_EQ(protocol.events, EventList({"E1"}));
}

TEST_F(XmlFault_1_0, RepeatsAnEventWithoutIdentifierForEver) {
    const std::string xml =
        Xml({Event("E1", "m1"), "<recording-event><video><metadata name=\"m\" /></video></recording-event>",
             Event("E2", "m2")});
    const Entries received = Received(xml);
    const auto before = static_cast<std::size_t>(std::distance(received.begin(), received.end())) + 1;
    const auto handleLimited = [&] {
        LimitJournal(before + 1000);
        Handle(xml);
    };
    EXPECT_STATUS_AT_ONCE(kJournalFull, handleLimited(), received, FoundEvent("E1"),
                          std::vector<Entry>(1000, NoReid()));
}

}  // namespace
