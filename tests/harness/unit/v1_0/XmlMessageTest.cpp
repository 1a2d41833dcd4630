#include <tinyxml.h>

#include "tests/harness/unit/support/Content.h"
#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

/// What Handle_XML_msg takes from a message.
class XmlMessage_1_0 : public Dialogue_1_0 {
 protected:
    /// Passes a message to Handle_XML_msg, and expects one line for each event that it adds to `events`.
    void Unpack(const std::string& text) {
        const std::size_t before = protocol.events.size();
        TiXmlDocument document;
        document.Parse(text.c_str());
        ASSERT_FALSE(document.Error()) << text;
        protocol.Handle_XML_msg(document);
        std::vector<Entry> lines;
        auto event = protocol.events.begin();
        std::advance(event, before);
        for (; event not_eq protocol.events.end(); ++event) {
            lines.push_back(FoundEvent(*event));
        }
        EXPECT_JOURNAL(lines);
    }

    /// Unpacks the description of E1 with that content, and expects its file names.
    void ExpectFiles(const std::string& content, const std::vector<std::string>& names) {
        Unpack(Xml({"<recording-event reid=\"E1\">" + content + "</recording-event>"}));
        FileList files;
        for (const std::string& name : names) {
            files.emplace_back("E1", name);
        }
        EXPECT_EQ(protocol.events, EventList({"E1"}));
        EXPECT_EQ(protocol.filesToReceive, files);
    }

    void ExpectNothing(const std::string& text) {
        SCOPED_TRACE(text);
        Unpack(text);
        EXPECT_TRUE(protocol.events.empty());
        EXPECT_TRUE(protocol.filesToReceive.empty());
    }
};

TEST_F(XmlMessage_1_0, QueuesMetadataAndStreamFilesOfEachEventInOrder) {
    Unpack(Xml({Event("E1", "m1", {"a", "b"}), Event("E2", "m2")}));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "m1"}, {"E1", "a"}, {"E1", "b"}, {"E2", "m2"}}));
}

TEST_F(XmlMessage_1_0, AppendsToWhatIsQueuedAlready) {
    Unpack(Xml({Event("E1", "m1")}));
    Unpack(Xml({Event("E2", "m2"), Event("E1", "m1")}));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2", "E1"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "m1"}, {"E2", "m2"}, {"E1", "m1"}}));
}

TEST_F(XmlMessage_1_0, DoesNothingWithoutXmlFileOrString) {
    for (const std::string text :
         {"<msg req=\"XML\" />", "<msg req=\"XML\"><string>x</string></msg>",
          "<msg req=\"XML\"><xmlfile><string>x</string></xmlfile></msg>",
          "<msg req=\"XML\"><xmlFile /></msg>", "<msg req=\"XML\"><xmlFile>text</xmlFile></msg>",
          "<msg req=\"XML\"><xmlFile><note>x</note></xmlFile></msg>", "<message><xmlFile /></message>"}) {
        ExpectNothing(text);
    }
}

TEST_F(XmlMessage_1_0, TakesACommentThatReadsLikeATagForIt) {
    const std::string string = String(Event("E1", "m1"));
    ExpectNothing("<msg req=\"XML\"><!--xmlFile--><xmlFile>" + string + "</xmlFile></msg>");
    ExpectNothing(XmlOf("<!--string-->" + string));
    ExpectNothing(Xml({"<!--recording-event-->" + Event("E1", "m1")}));
}

TEST_F(XmlMessage_1_0, TakesOnlyTheFirstXmlFile) {
    const std::string xmlFile = "<xmlFile>" + String(Event("E1", "m1")) + "</xmlFile>";
    ExpectNothing("<msg req=\"XML\"><xmlFile />" + xmlFile + "</msg>");
}

TEST_F(XmlMessage_1_0, SkipsAStringWithoutText) {
    Unpack(XmlOf("<string></string>" + String(Event("E1", "m1")) + "<string /><string>  \n </string>" +
                 "<string><x/></string><string><!--c--></string>" + String(Event("E2", "m2"))));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
}

TEST_F(XmlMessage_1_0, TakesSiblingsOfStringWhateverTheyAreCalled) {
    Unpack(XmlOf(String(Event("E1", "m1")) + "<note>" + Escaped(Event("E2", "m2")) + "</note>"));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "m1"}, {"E2", "m2"}}));
}

TEST_F(XmlMessage_1_0, PassesOverElementsAheadOfTheFirstString) {
    Unpack(XmlOf("<note>" + Escaped(Event("E2", "m2")) + "</note>" + String(Event("E1", "m1"))));
    EXPECT_EQ(protocol.events, EventList({"E1"}));
}

TEST_F(XmlMessage_1_0, SkipsSiblingsThatAreNoElements) {
    Unpack(XmlOf(String(Event("E1", "m1")) + "<!-- c -->" + Escaped(Event("E9", "m9")) + "<![CDATA[text]]>" +
                 String(Event("E2", "m2"))));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
}

TEST_F(XmlMessage_1_0, TakesADescriptionThatIsNotEscapedButQuoted) {
    Unpack(XmlOf("<string><![CDATA[" + Event("E1", "m1") + "]]></string>"));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "m1"}}));
}

TEST_F(XmlMessage_1_0, TakesADescriptionWithDeclarationAndComments) {
    Unpack(Xml({"<?xml version=\"1.0\"?>\n<!-- c -->\n" + Event("E1", "m1") + "\n<other/>"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "m1"}}));
}

TEST_F(XmlMessage_1_0, DiscardsADescriptionWithoutRecordingEvent) {
    Unpack(Xml({"<event reid=\"E0\" />", "<list>" + Event("E9", "m9") + "</list>", Event("E1", "m1")}));
    EXPECT_EQ(protocol.events, EventList({"E1"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "m1"}}));
}

TEST_F(XmlMessage_1_0, TakesOneEventADescription) {
    Unpack(Xml({Event("E1", "m1") + Event("E2", "m2")}));
    EXPECT_EQ(protocol.events, EventList({"E1"}));
}

TEST_F(XmlMessage_1_0, TakesAnEmptyIdentifier) {
    Unpack(Xml({Event("", "m1")}));
    EXPECT_EQ(protocol.events, EventList({""}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"", "m1"}}));
}

class FilesOfADescription_1_0 : public XmlMessage_1_0, public testing::WithParamInterface<Content> {};

TEST_P(FilesOfADescription_1_0, AreQueued) {
    ExpectFiles(GetParam().text, GetParam().files);
}

INSTANTIATE_TEST_SUITE_P(With, FilesOfADescription_1_0, testing::ValuesIn(ContentsOfADescription()),
                         [](const auto& content) { return content.param.name; });

TEST_F(XmlMessage_1_0, LeavesTheEncodingOfADescriptionToTheXmlLibrary) {
    Unpack(Xml({Event("E&#233;", "m&#233;")}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E\xe9", "m\xe9"}}));
}

}  // namespace
