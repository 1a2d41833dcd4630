#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

/// The file a of E1 is awaited.
class FILE_COMPLETE : public Dialogue {
 protected:
    FILE_COMPLETE() {
        protocol.events = {"E1", "E2"};
        protocol.filesToReceive = {{"E1", "a"}, {"E1", "b"}, {"E1", "c"}};
        protocol.fileRequestPending = true;
    }

    void ExpectUnchangedLists() const {
        EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "a"}, {"E1", "b"}, {"E1", "c"}}));
        EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
        EXPECT_FALSE(protocol.fileRequestPending);
    }
};

TEST_F(FILE_COMPLETE, OfTheAwaitedFileRequestsTheNext) {
    EXPECT_REACTION(FileComplete("E1", "a"), GotFileComplete("E1", "a"),
                    Logged(32, "filesToReceive size = 2"), Sent(GetFile("E1", "b")), Slept(1));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "b"}, {"E1", "c"}}));
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(FILE_COMPLETE, OfTheLastButOneFileRequestsTheLast) {
    protocol.filesToReceive.pop_front();
    EXPECT_REACTION(FileComplete("E1", "b"), GotFileComplete("E1", "b"), RequestedLastFile("E1", "c"));
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(FILE_COMPLETE, OfTheLastFileReportsTheEventComplete) {
    protocol.filesToReceive = {{"E1", "c"}};
    EXPECT_REACTION(FileComplete("E1", "c"), GotFileComplete("E1", "c"), CompletedEvent("E1"));
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
    EXPECT_FALSE(protocol.fileRequestPending);
}

TEST_F(FILE_COMPLETE, OfAnEmptyNameMatchesAnEmptyName) {
    protocol.filesToReceive = {{"", ""}};
    EXPECT_REACTION(FileComplete("", ""), GotFileComplete("", ""), CompletedEvent("E1"));
}

TEST_F(FILE_COMPLETE, OfAnotherFileIsReportedWithTheWholeDocument) {
    EXPECT_REACTION(
        FileComplete("E1", "b", R"( hashCode="H" length="5")"),
        InvalidFileComplete(R"(<msg req="FILE_COMPLETE" reid="E1" file="b" hashCode="H" length="5" />)"));
    ExpectUnchangedLists();
}

TEST_F(FILE_COMPLETE, OfAnotherEventOrFileIsReportedByEveryByte) {
    for (const auto& [reid, file] :
         {std::pair("E2", "a"), {"e1", "a"}, {"E1", "A"}, {"E", "a"}, {"E11", "a"}, {"E1", ""}}) {
        EXPECT_REACTION(FileComplete(reid, file), InvalidFileComplete(FileComplete(reid, file)));
    }
    ExpectUnchangedLists();
}

TEST_F(FILE_COMPLETE, OfAnotherFileIsPrintedCompactAsItWasParsed) {
    const std::string text =
        "<?xml version=\"1.0\" ?>\n<!-- c -->\n"
        "<msg req='FILE_COMPLETE' reid='x'   file='&lt;'>\n  <child>text</child>\n</msg>";
    EXPECT_REACTION(
        text, InvalidFileComplete(R"(<?xml version="1.0" ?><!-- c --><msg req="FILE_COMPLETE" reid="x" )"
                                  R"(file="&lt;"><child>text</child></msg>)"));
}

TEST_F(FILE_COMPLETE, OfAnotherFileLeavesTheAwaitedOneToComeLater) {
    EXPECT_REACTION(FileComplete("E1", "b"), InvalidFileComplete(FileComplete("E1", "b")));
    EXPECT_REACTION(FileComplete("E1", "a"), GotFileComplete("E1", "a"),
                    Logged(32, "filesToReceive size = 2"), Sent(GetFile("E1", "b")), Slept(1));
}

TEST_F(FILE_COMPLETE, ThatNobodyAwaitsIsReported) {
    protocol.filesToReceive.clear();
    for (const std::string& text : {FileComplete("E1", "a"), FileComplete("", "")}) {
        EXPECT_REACTION(text, InvalidFileComplete(text));
    }
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_FALSE(protocol.fileRequestPending);
}

TEST_F(FILE_COMPLETE, WithoutFileOrReidIsReportedOnce) {
    for (const std::string attributes : {R"( reid="E1" hashCode="H")", R"( file="a")", ""}) {
        EXPECT_REACTION(Msg("FILE_COMPLETE", attributes), IncompleteFileComplete());
        ExpectUnchangedLists();
    }
}

TEST_F(FILE_COMPLETE, WithoutMsgLacksEveryAttribute) {
    TiXmlDocument document;
    document.Parse(R"(<other reid="E1" file="a" />)");
    protocol.Handle_FILE_COMPLETE(document);
    EXPECT_JOURNAL(IncompleteFileComplete());
    ExpectUnchangedLists();
}

}  // namespace
