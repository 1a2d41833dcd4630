#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/Dialogue.h"

namespace {

const char* const kHandleEvent = "void VelProtocol_2_0::Handle_EVENT_msg(TiXmlDocument&)";

class EventMessage : public Dialect20 {
 protected:
    /// Has listed E1 and E2 and waits for the description of E1.
    void SetUp() override {
        Start();
        Lists({"E1", "E2"});
        dvr->Receives(v2::NextEvent("E1"));
    }

    void QueuesNothing() {
        harness->Logs(4, "Got EVENT message with no files to receive");
        Opens();
        Ends();
    }
};

TEST_F(EventMessage, SavesTheDescription) {
    Describes("E1", Description("E1", {"E1.xml", "E1_1"}));
    dvr->Receives(v2::GetFile("E1", "E1.xml"));
    EXPECT_EQ(
        "<recording-event reid=\"E1\">\n"
        "    <video>\n"
        "        <metadata name=\"E1.xml\" />\n"
        "        <streams>\n"
        "            <stream>\n"
        "                <file name=\"E1_1\" />\n"
        "            </stream>\n"
        "        </streams>\n"
        "    </video>\n"
        "</recording-event>\n",
        ReadFile("/mnt/hd/incoming_E1"));
    Ends();
}

TEST_F(EventMessage, OverwritesTheDescriptionSavedBefore) {
    Describes("E1", Description("E1", {"a", "b"}));
    dvr->Receives(v2::GetFile("E1", "a"));
    Describes("E1", Description("E1", {}));
    dvr->Receives(v2::GetFile("E1", "a"));
    EXPECT_EQ("<recording-event reid=\"E1\" />\n", ReadFile("/mnt/hd/incoming_E1"));
    Ends();
}

TEST_F(EventMessage, ExportsWithoutADisk) {
    ASSERT_EQ(0, rmdir("/mnt/hd"));
    Describes("E1", Description("E1", {"m1"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Completes("E1", "m1", 0);
    ReceivesEventXferComplete("E1");
    Ends();
}

TEST_F(EventMessage, QueuesMetadataAndThenTheFilesOfEachStream) {
    Describes("E1",
              "<recording-event reid=\"E1\"><video><streams><ignored><file name=\"no\"/></ignored>"
              "<stream name=\"no\"/><!--beside--><stream><file name=\"a\"/></stream>"
              "<other><audio name=\"b\"><file name=\"no\"/></audio></other></streams>"
              "<metadata name=\"m1\"/></video></recording-event>");
    dvr->Receives(v2::GetFile("E1", "m1"));
    Completes("E1", "m1", 2);
    dvr->Receives(v2::GetFile("E1", "a"));
    Completes("E1", "a", 1);
    harness->Logs(32, "calling SendFileRequest(E1/b, false)");
    dvr->Receives(v2::GetFile("E1", "b"));
    Completes("E1", "b", 0);
    ReceivesEventXferComplete("E1");
    Ends();
}

TEST_F(EventMessage, QueuesStreamFilesWithoutMetadata) {
    Describes("E1",
              "<recording-event reid=\"E1\"><video><streams><stream><file name=\"a\"/></stream></streams>"
              "</video></recording-event>");
    dvr->Receives(v2::GetFile("E1", "a"));
    Completes("E1", "a", 0);
    ReceivesEventXferComplete("E1");
    Ends();
}

TEST_F(EventMessage, QueuesNothingWithoutVideo) {
    Describes("E1", Description("E1", {}));
    QueuesNothing();
}

TEST_F(EventMessage, QueuesNothingForAStreamWithANameButNoChildren) {
    Describes("E1",
              "<recording-event reid=\"E1\"><video><streams><stream "
              "name=\"a\"/></streams></video></recording-event>");
    QueuesNothing();
}

TEST_F(EventMessage, QueuesNothingAndLogsNothingElseWithoutRecordingEvent) {
    Describes("E1", "<event reid=\"E1\"/>");
    QueuesNothing();
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_E1"));
}

TEST_F(EventMessage, IsRefusedForAnotherEvent) {
    Describes("E2", Description("E2", {"m2"}));
    harness->Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='E1'  act='E2'");
    QueuesNothing();
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_E2"));
}

TEST_F(EventMessage, IsRefusedWithoutReid) {
    dvr->Sends("<msg req=\"EVENT\"><xmlFile>" + Escaped(Description("E1", {"m1"})) + "</xmlFile></msg>");
    harness->Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='E1'  act=''");
    QueuesNothing();
}

TEST_F(EventMessage, RequestsTheFrontFileAgainAfterAMismatch) {
    Describes("E1", Description("E1", {"m1", "a"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Describes("E2", Description("E2", {"m2"}));
    harness->Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='E1'  act='E2'");
    dvr->Receives(v2::GetFile("E1", "m1"));
    Ends();
}

TEST_F(EventMessage, QueuesTheFilesOfARepeatedDescriptionOnceMore) {
    Describes("E1", Description("E1", {"m1"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Describes("E1", Description("E1", {"m1"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Completes("E1", "m1", 1);
    harness->Logs(32, "calling SendFileRequest(E1/m1, false)");
    dvr->Receives(v2::GetFile("E1", "m1"));
    Ends();
}

TEST_F(EventMessage, IsRefusedWithoutXmlFile) {
    dvr->Sends("<msg req=\"EVENT\" reid=\"E1\"><xml>text</xml></msg>");
    harness->Logs(16, "'reid' attribute in EVENT msg = 'E1'");
    harness->Logs(2, "EVENT message does not contain 'xmlFile' tag");
    QueuesNothing();
}

TEST_F(EventMessage, IsRefusedWithAnEmptyXmlFile) {
    Describes("E1", "");
    harness->Logs(2, "EVENT message 'xmlFile' tag does not contain data");
    QueuesNothing();
}

TEST_F(EventMessage, IsRefusedWithAnUnescapedDescription) {
    dvr->Sends("<msg req=\"EVENT\" reid=\"E1\"><xmlFile>" + Description("E1", {"m1"}) + "</xmlFile></msg>");
    harness->Logs(16, "'reid' attribute in EVENT msg = 'E1'");
    harness->Logs(2, "EVENT message 'xmlFile' tag does not contain data");
    QueuesNothing();
}

TEST_F(EventMessage, QueuesTheFilesOfADescriptionWithoutReidButSavesNothing) {
    Describes("E1", "<recording-event><video><metadata name=\"m1\"/></video></recording-event>");
    harness->Logs(2, "Escaped XML for event contains no REID");
    dvr->Receives(v2::GetFile("E1", "m1"));
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_"));
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_E1"));
    Ends();
}

TEST_F(EventMessage, SavesAnotherEventsDescriptionUnderItsOwnNameAndQueuesItsFiles) {
    Describes("E1", Description("E9", {"m9"}));
    harness->Logs(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp='E1'  act='E9'");
    dvr->Receives(v2::GetFile("E1", "m9"));
    EXPECT_TRUE(FileExists("/mnt/hd/incoming_E9"));
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_E1"));
    Ends();
}

TEST_F(EventMessage, DiesOfAMalformedDescription) {
    Describes("E1", "<recording-event reid='E1' <");
    harness->Logs(1, "error: 1:Error reading Attributes.");
    harness->Logs(1, "row: 1:28");
    Dies(kHandleEvent, "not embmsg.Error()");
}

using EventMessageUnasked = Dialect20;

TEST_F(EventMessageUnasked, IsRefusedWhileNoEventIsInProgress) {
    Start();
    Describes("E1", Description("E1", {"m1"}));
    harness->Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp=''  act='E1'");
    harness->Logs(4, "Got EVENT message with no files to receive");
    dvr->Sends("<msg req=\"EVENT\"><xmlFile>" + Escaped(Description("E1", {"m1"})) + "</xmlFile></msg>");
    harness->Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp=''  act=''");
    harness->Logs(4, "Got EVENT message with no files to receive");
    Opens();
    Ends();
}

}  // namespace
