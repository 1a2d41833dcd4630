#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

const std::string kGetXml = "<msg req=\"GET_XML\" />";

class Export_1_0 : public Dialogue_1_0 {
 protected:
    const std::string xml_ = Xml({Event("EVENT1", "A.xml", {"B.mp4"}), Event("EVENT2", "D.xml")});

    /// Plays a whole export of two events and expects every step of it.
    void ExpectExport() {
        EventList events = protocol.events;
        events.insert(events.end(), {"EVENT1", "EVENT2"});
        EXPECT_EQ(Handle(kOk), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(kOk), Logged(1, "got an OK, sending GET_XML"), Sent(kGetXml));
        EXPECT_EQ(Handle(xml_), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(xml_), FoundEvent("EVENT1"), FoundEvent("EVENT2"),
                       Sent(GetFile("EVENT1", "A.xml")));
        EXPECT_EQ(protocol.filesToReceive,
                  FileList({{"EVENT1", "A.xml"}, {"EVENT1", "B.mp4"}, {"EVENT2", "D.xml"}}));
        EXPECT_EQ(Handle(FileComplete("EVENT1", "A.xml")), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(FileComplete("EVENT1", "A.xml")), GotFileComplete("EVENT1", "A.xml"),
                       Sent(GetFile("EVENT1", "B.mp4")));
        EXPECT_EQ(Handle(FileComplete("EVENT1", "B.mp4")), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(FileComplete("EVENT1", "B.mp4")), GotFileComplete("EVENT1", "B.mp4"),
                       Sent(GetFile("EVENT2", "D.xml")));
        EXPECT_EQ(Handle(FileComplete("EVENT2", "D.xml")), VelProtocolBase::MSG_CLOSE_CLIENT);
        EXPECT_JOURNAL(Received(FileComplete("EVENT2", "D.xml")), GotFileComplete("EVENT2", "D.xml"),
                       ExportEnded(events));
    }
};

TEST_F(Export_1_0, AnswersEveryOkWithGetXml) {
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(Handle(kOk), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(kOk), Logged(1, "got an OK, sending GET_XML"), Sent(kGetXml));
    }
}

TEST_F(Export_1_0, SendsNothingWhenThereIsNoFile) {
    const std::string xml = Xml({"<recording-event reid=\"E1\" />"});
    EXPECT_EQ(Handle(xml), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(xml), FoundEvent("E1"));
    EXPECT_EQ(protocol.events, EventList({"E1"}));
}

TEST_F(Export_1_0, SendsNothingWhenThereIsNoEvent) {
    EXPECT_EQ(Handle(XmlOf("")), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(XmlOf("")));
}

TEST_F(Export_1_0, RequestsEachFileAndThenEndsTheExport) {
    ExpectExport();
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_EQ(protocol.events, EventList({"EVENT1", "EVENT2"}));
}

TEST_F(Export_1_0, EndsTheExportWhetherOrNotItsReportCanBeSaved) {
    Given(Xml({Event("E1", "A")}));
    NextSaveFails();
    EXPECT_EQ(Handle(FileComplete("E1", "A")), VelProtocolBase::MSG_CLOSE_CLIENT);
    EXPECT_JOURNAL(Received(FileComplete("E1", "A")), GotFileComplete("E1", "A"), ExportEnded({"E1"}));
}

TEST_F(Export_1_0, TheNextExportNamesTheEarlierEventsAgain) {
    ExpectExport();
    ExpectExport();
    EXPECT_EQ(protocol.events, EventList({"EVENT1", "EVENT2", "EVENT1", "EVENT2"}));
    EXPECT_EQ(protocol.socketFd, kSocket);
}

TEST_F(Export_1_0, ReportsEventsWithoutFilesToo) {
    Given(Xml({"<recording-event reid=\"E0\" />", Event("E1", "A")}));
    EXPECT_EQ(Handle(FileComplete("E1", "A")), VelProtocolBase::MSG_CLOSE_CLIENT);
    EXPECT_JOURNAL(Received(FileComplete("E1", "A")), GotFileComplete("E1", "A"), ExportEnded({"E0", "E1"}));
}

TEST_F(Export_1_0, ReportsIdentifiersEscaped) {
    Given(Xml({Event("a&amp;&lt;b", "A")}));
    EXPECT_EQ(protocol.events, EventList({"a&<b"}));
    const std::string complete = FileComplete("a&amp;&lt;b", "A");
    EXPECT_EQ(Handle(complete), VelProtocolBase::MSG_CLOSE_CLIENT);
    EXPECT_JOURNAL(
        Received(complete), GotFileComplete("a&<b", "A"), Logged(16, "Sending EVENT_XFER_COMPLETE"),
        Logged(16, "HandleMessage: event = 'a&<b'"),
        Saved("/mnt/hd/outgoingETCstring",
              "<msg req=\"EVENT_XFER_COMPLETE\">\n    <events>\n"
              "        <string>a&amp;&lt;b</string>\n    </events>\n</msg>\n"),
        Sent("<msg req=\"EVENT_XFER_COMPLETE\"><events><string>a&amp;&lt;b</string></events></msg>"),
        Logged(16, "Sending DONE"), Sent("<msg req=\"DONE\" />"));
}

TEST_F(Export_1_0, AnOkInTheMiddleLeavesTheListsAlone) {
    Given(xml_);
    EXPECT_EQ(Handle(kOk), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(kOk), Logged(1, "got an OK, sending GET_XML"), Sent(kGetXml));
    EXPECT_EQ(protocol.events, EventList({"EVENT1", "EVENT2"}));
    EXPECT_EQ(protocol.filesToReceive,
              FileList({{"EVENT1", "A.xml"}, {"EVENT1", "B.mp4"}, {"EVENT2", "D.xml"}}));
}

TEST_F(Export_1_0, ASecondXmlAppendsAndRequestsTheFrontFileAgain) {
    Given(Xml({Event("E1", "A")}));
    const std::string second = Xml({Event("E2", "B")});
    EXPECT_EQ(Handle(second), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(second), FoundEvent("E2"), Sent(GetFile("E1", "A")));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "A"}, {"E2", "B"}}));
}

TEST_F(Export_1_0, DoesNotReadTheNumberOfItsDialect) {
    protocol.protocol = 2;
    ExpectExport();
}

TEST_F(Export_1_0, SendsAFileRequestWithoutALineAndLeavesTheListsAlone) {
    protocol.filesToReceive.emplace_back("E1", "A");
    VelProtocolBase::FileEntry other = {"E9", "x \"y\".xml"};
    protocol.SendFileRequest(other);
    EXPECT_JOURNAL(Sent("<msg req=\"GET_FILE\" path=\"E9\" file='x &quot;y&quot;.xml' />"));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "A"}}));
}

}  // namespace
