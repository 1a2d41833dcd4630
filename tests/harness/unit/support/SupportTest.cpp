#include <sys/socket.h>
#include <tinyxml.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "tests/harness/unit/support/HarnessTest.h"

namespace {

class Support : public HarnessTest {};

TEST_F(Support, ReadsPieceByPiece) {
    FeedBytes("abc");
    FeedError(EINTR);
    FeedBytes("de");
    FeedEnd();
    char bytes[8] = {};
    EXPECT_EQ(read(kSocket, bytes, 2), 2);
    EXPECT_EQ(read(kSocket, bytes + 2, 6), 1);
    EXPECT_EQ(read(kSocket, bytes + 3, 5), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(read(kSocket, bytes + 3, 5), 2);
    EXPECT_EQ(read(kSocket, bytes + 5, 3), 0);
    EXPECT_STREQ(bytes, "abcde");
    EXPECT_JOURNAL(Read(2, 2), Read(6, 1), ReadFailed(5, EINTR), Read(5, 2), Read(3, 0));
}

TEST_F(Support, AReadWithoutAScriptThrows) {
    char byte = 0;
    EXPECT_THROW(static_cast<void>(read(kSocket, &byte, 1)), std::logic_error);
    EXPECT_JOURNAL(Printed("read 1: nothing was fed"));
}

TEST_F(Support, WritesTakeWhatTheyAreToldTo) {
    NextWriteTakes(2);
    NextWriteFails(EPIPE);
    EXPECT_EQ(write(kSocket, "abc", 3), 2);
    EXPECT_EQ(write(kSocket, "abc", 3), -1);
    EXPECT_EQ(errno, EPIPE);
    EXPECT_EQ(write(kSocket, "a\x80\n", 3), 3);
    EXPECT_JOURNAL(WroteOnly("abc", 2), WroteOnly("abc", -1), Wrote("a\x80\n"));
}

TEST_F(Support, ShowsTheEndOfAProcess) {
    EXPECT_ABORT((AddToJournal("last words"), std::abort()), Printed("last words"));
    EXPECT_EXIT_STATUS(3, std::exit(3), Nothing());
    EXPECT_STATUS_AT_ONCE(3, _exit(3), Nothing());
    EXPECT_ABORT(throw std::logic_error("text"), Uncaught("std::logic_error", "text"));
    EXPECT_STATUS_AT_ONCE(kJournalFull, LimitJournal(2);
                          while (true) AddToJournal("again"), Printed("again"), Printed("again"));
}

TEST_F(Support, ExpectsOnlyLinesThatTheMaskLetsThrough) {
    LogMask(2);
    AddLogLine(2, "velloran", "velloran:1 text");
    EXPECT_JOURNAL(Logged(1, "other"), Logged(2, "text"));
}

TEST_F(Support, MarksLinesWithAnotherHead) {
    AddLogLine(2, "velloran", "protocol:1 text");
    EXPECT_EQ(TakeJournal(), "log 2: protocol:1 text (does not start with velloran:LINE)\n");
    AddLogLine(2, "", "velloran:1 text");
    EXPECT_EQ(TakeJournal(), "log 2: text (logged in the name of '')\n");
}

TEST_F(Support, KnowsPrefixes) {
    EXPECT_EQ(Prefix(0), std::string(1, '\0'));
    EXPECT_EQ(Prefix(127), "\x7f");
    EXPECT_EQ(Prefix(300), "\xac\x02");
    EXPECT_EQ(Prefix(0xFFFFFFFF), "\xff\xff\xff\xff\x0f");
}

TEST_F(Support, KeepsSavedDocumentsOffTheDisk) {
    TiXmlDocument document;
    document.Parse("<a><b/></a>");
    NextSaveFails();
    EXPECT_FALSE(document.SaveFile("/mnt/hd/saved"));
    EXPECT_TRUE(document.SaveFile(std::string("/mnt/hd/saved")));
    EXPECT_NE(access("/mnt/hd/saved", F_OK), 0);
    EXPECT_JOURNAL(Saved("/mnt/hd/saved", "<a>\n    <b />\n</a>\n"),
                   Saved("/mnt/hd/saved", "<a>\n    <b />\n</a>\n"));
}

TEST_F(Support, RecordsCommandsAndPausesWithoutThem) {
    NextSystemReturns(256);
    EXPECT_EQ(system("exit 3"), 256);
    EXPECT_EQ(system("exit 3"), 0);
    EXPECT_EQ(sleep(1000), 0U);
    EXPECT_EQ(usleep(999999), 0);
    EXPECT_JOURNAL(Ran("exit 3"), Ran("exit 3"), Slept(1000), Paused(999999));
}

TEST_F(Support, ACallOfTheListenerWithoutAScriptEndsTheProcess) {
    EXPECT_ABORT(static_cast<void>(listen(70, 5)), ListenCalled(70, 5),
                 Printed("listen: nothing is scripted"));
}

}  // namespace
