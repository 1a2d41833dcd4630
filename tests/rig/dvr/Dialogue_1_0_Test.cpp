#include "rig/dvr/dialogue/Dialogue_1_0.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/rig/dvr/Failures.h"
#include "tests/rig/dvr/FixedRecordings.h"

namespace {

using rig::dvr::Dialogue_1_0;
using rig::dvr::Message;

class Dialogue10Test : public testing::Test {
 protected:
    /// Passes a message's text to the dialogue. @return the texts of the answers
    std::vector<std::string> Handle(const std::string& text) {
        std::vector<std::string> answers;
        for (const Message& answer : dialogue_.Handle(Message::Parse(text))) {
            answers.push_back(answer.Text());
        }
        return answers;
    }

    std::string Breach(const std::string& text) {
        return BreachOf([&] { Handle(text); });
    }

    void Transfer(const std::string& event, const std::string& file) {
        EXPECT_TRUE(
            Handle(R"(<msg req="GET_FILE" path=")" + event + R"(" file=")" + file + R"("/>)").empty());
        dialogue_.FinishTransfer();
    }

    void TransferAll() {
        Handle(R"(<msg req="GET_XML"/>)");
        for (const char* file : {"m.xml", "a.ts", "b.ts"}) {
            Transfer("EVT1", file);
        }
        for (const char* file : {"m.xml", "c.ts"}) {
            Transfer("EVT2", file);
        }
    }

    FixedRecordings recordings_;
    Dialogue_1_0 dialogue_{recordings_};
    const std::string complete_ =
        R"(<msg req="EVENT_XFER_COMPLETE"><events><string>EVT1</string><string>EVT2</string></events></msg>)";
};

TEST_F(Dialogue10Test, OpensWithAnOkWithoutVersion) {
    EXPECT_EQ(dialogue_.Open().Text(), R"(<msg req="OK"/>)");
    EXPECT_EQ(dialogue_.Expected(), "GET_XML or UPDATE_CONFIGURATION");
}

TEST_F(Dialogue10Test, AnswersGetXmlWithAllDescriptionsAsText) {
    const auto answers = dialogue_.Handle(Message::Parse(R"(<msg req="GET_XML"/>)"));
    ASSERT_EQ(answers.size(), 1U);
    const Message parsed = Message::Parse(answers[0].Text());
    EXPECT_EQ(parsed.Name(), "XML");
    std::vector<std::string> descriptions;
    for (const pugi::xml_node entry : parsed.Root().child("xmlFile").children("string")) {
        descriptions.emplace_back(entry.text().get());
    }
    EXPECT_EQ(descriptions, (std::vector<std::string>{recordings_.Find("EVT1").Describe(),
                                                      recordings_.Find("EVT2").Describe()}));
}

TEST_F(Dialogue10Test, AnswersGetFileWithACompletionWhenTheTransferIsOver) {
    Handle(R"(<msg req="GET_XML"/>)");
    EXPECT_TRUE(Handle(R"(<msg req="GET_FILE" path="EVT1" file="a.ts"/>)").empty());
    EXPECT_TRUE(dialogue_.IsTransferring());
    EXPECT_EQ(dialogue_.FinishTransfer().Text(),
              R"(<msg req="FILE_COMPLETE" reid="EVT1" file="a.ts" length="4" )"
              R"(hashCode="0d18d4eb377a214157ad45e7ee0f189a2d7370788a483e729c7f269d94cafe41"/>)");
    EXPECT_FALSE(dialogue_.IsTransferring());
}

TEST_F(Dialogue10Test, IsDoneAfterTheListOfEventsAndDone) {
    TransferAll();
    EXPECT_EQ(dialogue_.Expected(), "EVENT_XFER_COMPLETE");
    EXPECT_TRUE(Handle(complete_).empty());
    EXPECT_EQ(dialogue_.Expected(), "DONE");
    EXPECT_FALSE(dialogue_.IsDone());
    EXPECT_TRUE(Handle(R"(<msg req="DONE"/>)").empty());
    EXPECT_TRUE(dialogue_.IsDone());
    EXPECT_EQ(dialogue_.Summary(), "exported 2 of 2 events, 5 files, 22 bytes");
}

TEST_F(Dialogue10Test, AcceptsEventsOfEarlierExportsBeforeItsOwn) {
    TransferAll();
    Handle(R"(<msg req="EVENT_XFER_COMPLETE"><events><string>OLD</string><string>EVT1</string>)"
           R"(<string>EVT2</string></events></msg>)");
    EXPECT_EQ(dialogue_.Expected(), "DONE");
}

TEST_F(Dialogue10Test, RefusesAConfigurationAndIsDone) {
    const auto answers =
        Handle(R"(<msg req="UPDATE_CONFIGURATION" txt="&lt;FakeConfig info=&quot;bogus&quot; /&gt;"/>)");
    EXPECT_EQ(answers, (std::vector<std::string>{R"(<msg req="CONFIGURATION_UPDATE_ERROR"/>)"}));
    EXPECT_TRUE(dialogue_.IsDone());
    EXPECT_EQ(dialogue_.Summary(),
              "exported nothing: refused the configuration update, which ends the dialogue");
}

TEST_F(Dialogue10Test, WantsAConfigurationThatIsADocument) {
    EXPECT_EQ(Breach(R"(<msg req="UPDATE_CONFIGURATION" txt="&lt;FakeConfig"/>)"),
              "UPDATE_CONFIGURATION with a 'txt' that is not an XML document: '<FakeConfig'");
    EXPECT_EQ(Breach(R"(<msg req="UPDATE_CONFIGURATION" message="&lt;a/&gt;"/>)"),
              "UPDATE_CONFIGURATION without its attribute 'txt'");
}

TEST_F(Dialogue10Test, RefusesAnUnknownMessage) {
    EXPECT_EQ(Breach(R"(<msg req="get_xml"/>)"), "an unknown message, 'get_xml'");
    EXPECT_EQ(Breach(R"(<msg req="GET_EVENT_LIST"/>)"), "an unknown message, 'GET_EVENT_LIST'");
}

TEST_F(Dialogue10Test, RefusesAVersion) {
    EXPECT_EQ(Breach(R"(<msg req="GET_XML" protocolVersion="2.0"/>)"),
              "GET_XML with a protocolVersion, '2.0', which protocol 1.0 does not have");
}

TEST_F(Dialogue10Test, RefusesWrongAttributesAndContents) {
    EXPECT_EQ(Breach(R"(<msg req="GET_XML" more="x"/>)"), "GET_XML with an unknown attribute 'more'");
    EXPECT_EQ(Breach(R"(<msg req="GET_XML" req="GET_XML"/>)"), "GET_XML with the attribute 'req' twice");
    EXPECT_EQ(Breach(R"(<msg req="GET_XML"><events/></msg>)"), "GET_XML with content in 'msg'");
    Handle(R"(<msg req="GET_XML"/>)");
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" file="a.ts"/>)"), "GET_FILE without its attribute 'path'");
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" path="EVT1"/>)"), "GET_FILE without its attribute 'file'");
}

TEST_F(Dialogue10Test, RefusesRequestsThatAreOutOfPlace) {
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" path="EVT1" file="a.ts"/>)"), "GET_FILE in answer to OK");
    EXPECT_EQ(Breach(R"(<msg req="DONE"/>)"), "DONE in answer to OK");
    Handle(R"(<msg req="GET_XML"/>)");
    EXPECT_EQ(Breach(R"(<msg req="GET_XML"/>)"), "GET_XML while 5 files are still to be transferred");
    EXPECT_EQ(Breach(complete_), "EVENT_XFER_COMPLETE while 5 files are still to be transferred");
    EXPECT_EQ(Breach(R"(<msg req="DONE"/>)"), "DONE while 5 files are still to be transferred");
}

TEST_F(Dialogue10Test, RefusesAnyRequestDuringATransfer) {
    Handle(R"(<msg req="GET_XML"/>)");
    Handle(R"(<msg req="GET_FILE" path="EVT1" file="a.ts"/>)");
    EXPECT_EQ(dialogue_.Expected(), "no message");
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" path="EVT1" file="a.ts"/>)"),
              "GET_FILE while 'EVT1'/'a.ts' is in transfer");
}

TEST_F(Dialogue10Test, RefusesAFileThatItDidNotDescribe) {
    Handle(R"(<msg req="GET_XML"/>)");
    EXPECT_EQ(Breach(R"(<msg req="GET_FILE" path="EVT2" file="a.ts"/>)"),
              "GET_FILE for 'EVT2'/'a.ts', which is not a file that is still to be transferred");
}

TEST_F(Dialogue10Test, RefusesAListThatLacksAnEvent) {
    TransferAll();
    EXPECT_EQ(Breach(R"(<msg req="EVENT_XFER_COMPLETE"><events><string>EVT1</string></events></msg>)"),
              "EVENT_XFER_COMPLETE with a list of 1 event that does not end with the 2 of this export");
    EXPECT_EQ(
        Breach(R"(<msg req="EVENT_XFER_COMPLETE"><events><string>EVT2</string><string>EVT1</string></events>)"
               R"(</msg>)"),
        "EVENT_XFER_COMPLETE with a list of 2 events that does not end with the 2 of this export");
    EXPECT_EQ(Breach(R"(<msg req="EVENT_XFER_COMPLETE"/>)"),
              "EVENT_XFER_COMPLETE with a list of 0 events that does not end with the 2 of this export");
}

}  // namespace
