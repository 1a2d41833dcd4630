#include "tests/harness/unit/v1_0/Dialogue_1_0.h"

namespace {

class FileComplete_1_0 : public Dialogue_1_0 {
 protected:
    FileComplete_1_0() { protocol.filesToReceive = files_; }

    void ExpectIgnored(const std::string& text, const Entry& line) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Handle(text), VelProtocolBase::MSG_CONTINUE);
        EXPECT_JOURNAL(Received(text), line);
    }

    const FileList files_ = {{"E1", "A"}, {"E1", "B"}};
};

TEST_F(FileComplete_1_0, DropsTheFrontFileAndRequestsTheNext) {
    const std::string text = "<msg file=\"A\" reid=\"E1\" hash=\"0\" req=\"FILE_COMPLETE\"><x/></msg>";
    EXPECT_EQ(Handle(text), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(text), GotFileComplete("E1", "A"), Sent(GetFile("E1", "B")));
    EXPECT_EQ(protocol.filesToReceive, FileList({{"E1", "B"}}));
}

TEST_F(FileComplete_1_0, MissesReidOrFile) {
    for (const std::string attributes : {"", "reid=\"E1\"", "file=\"A\"", "REID=\"E1\" file=\"A\""}) {
        ExpectIgnored("<msg req=\"FILE_COMPLETE\" " + attributes + " />",
                      Logged(2, "Got FILE_COMPLETE without both reid and file"));
    }
    EXPECT_EQ(protocol.filesToReceive, files_);
}

TEST_F(FileComplete_1_0, RejectsWhateverIsNotTheFrontFile) {
    const std::pair<std::string, std::string> others[] = {
        {"E2", "A"}, {"E1", "B"}, {"A", "E1"}, {"", ""}, {"E1", ""}, {"E1", "A "}, {"E11", "A"}, {"E", "A"}};
    for (const auto& [reid, file] : others) {
        const std::string text = FileComplete(reid, file);
        ExpectIgnored(text, Logged(1, "invalid file in FILE_COMPLETE: " + text));
    }
    EXPECT_EQ(protocol.filesToReceive, files_);
}

TEST_F(FileComplete_1_0, RejectsAnotherLetterCase) {
    for (const auto& [reid, file] :
         std::vector<std::pair<std::string, std::string>>{{"e1", "A"}, {"E1", "a"}, {"e1", "a"}}) {
        const std::string text = FileComplete(reid, file);
        ExpectIgnored(text, Logged(1, "invalid file in FILE_COMPLETE: " + text));
    }
    EXPECT_EQ(protocol.filesToReceive, files_);
}

TEST_F(FileComplete_1_0, PrintsTheWholeRejectedDocumentAnew) {
    ExpectIgnored(
        "<?xml version='1.0'?>\n<!--c-->\n<msg req='FILE_COMPLETE'   reid='E2' file='&lt;A'>\n <x> y</x>\n"
        "</msg>\n",
        Logged(1,
               "invalid file in FILE_COMPLETE: <?xml version=\"1.0\" ?><!--c--><msg "
               "req=\"FILE_COMPLETE\" reid=\"E2\" file=\"&lt;A\"><x>y</x></msg>"));
}

TEST_F(FileComplete_1_0, TheFileStaysOutstandingAfterARejection) {
    Given(FileComplete("E1", "B"));
    EXPECT_EQ(Handle(FileComplete("E1", "A")), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Received(FileComplete("E1", "A")), GotFileComplete("E1", "A"), Sent(GetFile("E1", "B")));
}

TEST_F(FileComplete_1_0, RejectsAnyFileWhileNoneIsAwaited) {
    protocol.filesToReceive.clear();
    for (const std::string& text : {FileComplete("E1", "A"), FileComplete("", "")}) {
        ExpectIgnored(text, Logged(1, "invalid file in FILE_COMPLETE: " + text));
    }
    EXPECT_TRUE(protocol.filesToReceive.empty());
}

TEST_F(FileComplete_1_0, RejectsAFileOnceMoreAfterTheExportHasEnded) {
    Given(FileComplete("E1", "A"));
    Given(FileComplete("E1", "B"));
    ExpectIgnored(FileComplete("E1", "B"),
                  Logged(1, "invalid file in FILE_COMPLETE: " + FileComplete("E1", "B")));
}

TEST_F(FileComplete_1_0, EndsAnExportWithoutEventsAllTheSame) {
    protocol.filesToReceive = {{"E1", "A"}};
    EXPECT_EQ(Handle(FileComplete("E1", "A")), VelProtocolBase::MSG_CLOSE_CLIENT);
    EXPECT_JOURNAL(
        Received(FileComplete("E1", "A")), GotFileComplete("E1", "A"),
        Logged(16, "Sending EVENT_XFER_COMPLETE"),
        Saved("/mnt/hd/outgoingETCstring", "<msg req=\"EVENT_XFER_COMPLETE\">\n    <events />\n</msg>\n"),
        Sent("<msg req=\"EVENT_XFER_COMPLETE\"><events /></msg>"), Logged(16, "Sending DONE"),
        Sent("<msg req=\"DONE\" />"));
}

TEST_F(FileComplete_1_0, EndsTheProcessWhenDoneCannotBeSent) {
    protocol.filesToReceive = {{"E1", "A"}};
    for (int count = 0; count < 3; ++count) {
        NextWriteSucceeds();
    }
    NextWriteFails(104);
    const std::string complete = FileComplete("E1", "A");
    EXPECT_ABORT(
        Handle(complete), Received(complete), GotFileComplete("E1", "A"),
        Logged(16, "Sending EVENT_XFER_COMPLETE"),
        Saved("/mnt/hd/outgoingETCstring", "<msg req=\"EVENT_XFER_COMPLETE\">\n    <events />\n</msg>\n"),
        Sent("<msg req=\"EVENT_XFER_COMPLETE\"><events /></msg>"), Logged(16, "Sending DONE"),
        Logged(64, "hdr[0]= 12"), Wrote("\x12"), WroteOnly("<msg req=\"DONE\" />", -1),
        Logged(2, "SendMessage: msg: size= 18  errorno=Connection reset by peer"),
        AssertionFailed("void VelProtocolBase::SendMessage(TiXmlDocument&)",
                        "writelen == static_cast<int>(msgSize)"));
}

}  // namespace
