#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

const std::string kGetXml = "<msg req=\"GET_XML\" />";

class Export_1_0 : public Dialogue_1_0 {
 protected:
    const std::string xml_ = Xml({Event("E1", "A", {"B"}), Event("E2", "D")});

    /// Plays a whole export of two events and expects every step of it.
    void ExpectExport() {
        const auto sent = [this](const std::string& text) {
            return protocol.sizeError ? SentWithSizeError(text) : Sent(text);
        };
        EXPECT_EQ(Handle(kOk), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(kOk), Logged(1, "got an OK, sending GET_XML"), sent(kGetXml));
        EXPECT_EQ(Handle(xml_), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(xml_), FoundEvent("E1"), FoundEvent("E2"), sent(GetFile("E1", "A")));
        EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "A"}, {"E1", "B"}, {"E2", "D"}}));
        EXPECT_EQ(Handle(FileComplete("E1", "A")), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(FileComplete("E1", "A")), GotFileComplete("E1", "A"),
                       sent(GetFile("E1", "B")));
        EXPECT_EQ(Handle(FileComplete("E1", "B")), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(FileComplete("E1", "B")), GotFileComplete("E1", "B"),
                       sent(GetFile("E2", "D")));
        EXPECT_EQ(Handle(FileComplete("E2", "D")), VelProtocolBase::MSG_CLOSE_CLIENT);
        EXPECT_JOURNAL(Received(FileComplete("E2", "D")), GotFileComplete("E2", "D"),
                       ExportEnded(protocol.events));
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
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
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
    EXPECT_EQ(protocol.events, EventList({"E1", "E2", "E1", "E2"}));
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
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "A"}, {"E1", "B"}, {"E2", "D"}}));
}

TEST_F(Export_1_0, ASecondXmlAppendsAndRequestsTheFrontFileAgain) {
    Given(Xml({Event("E1", "A")}));
    const std::string second = Xml({Event("E2", "B")});
    EXPECT_EQ(Handle(second), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(second), FoundEvent("E2"), Sent(GetFile("E1", "A")));
    EXPECT_EQ(protocol.events, EventList({"E1", "E2"}));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "A"}, {"E2", "B"}}));
}

TEST_F(Export_1_0, AnnouncesHalfAsMuchAgainInEveryFrameWithSizeError) {
    protocol.sizeError = true;
    ExpectExport();
}

TEST_F(Export_1_0, IsTheSameWhateverIsLogged) {
    for (const unsigned int mask : kMasks) {
        SCOPED_TRACE(mask);
        LogMask(mask);
        ExpectExport();
    }
}

TEST_F(Export_1_0, IsTheSameWithEachSwitchOfTheNewerDialect) {
    using Switch = bool VelProtocolBase::*;
    const Switch switches[] = {&VelProtocolBase::rehash,         &VelProtocolBase::invalidEvent,
                               &VelProtocolBase::invalidFile,    &VelProtocolBase::transportException,
                               &VelProtocolBase::xferInProgress, &VelProtocolBase::upgrade};
    for (const Switch one : switches) {
        protocol.*one = true;
        ExpectExport();
        EXPECT_TRUE(protocol.*one);
    }
}

TEST_F(Export_1_0, IsTheSameWithEachNumberOfTheNewerDialect) {
    protocol.closeEarly = 1;
    protocol.doneDuration = 7;
    protocol.sleepForGetFile = 9;
    ExpectExport();
    EXPECT_EQ(protocol.closeEarly, 1);
    EXPECT_EQ(protocol.doneDuration, 7);
    EXPECT_EQ(protocol.sleepForGetFile, 9);
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
