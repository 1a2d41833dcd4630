#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

/// What follows when the DVR has finished with the front file.
class NextFile : public Dialogue {
 protected:
    NextFile() { protocol.events = {"EVENT1", "EVENT2"}; }

    void SetAllFaults() {
        protocol.invalidFile = true;
        protocol.transportException = true;
        protocol.rehash = true;
        protocol.xferInProgress = true;
    }

    void ExpectAllFaults() const {
        EXPECT_TRUE(protocol.invalidFile);
        EXPECT_TRUE(protocol.transportException);
        EXPECT_TRUE(protocol.rehash);
        EXPECT_TRUE(protocol.xferInProgress);
    }
};

TEST_F(NextFile, IsRequestedAndThenWaitedForWhileMoreThanOneIsLeft) {
    protocol.filesToReceive = {{"EVENT1", "a"}, {"EVENT1", "b"}, {"EVENT1", "c"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(Logged(32, "filesToReceive size = 2"), Sent(GetFile("EVENT1", "b")), Slept(1));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "b"}, {"EVENT1", "c"}}));
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(NextFile, IsFollowedByThePauseThatTheSwitchSets) {
    protocol.sleepForGetFile = 7;
    protocol.filesToReceive = Files(11, {"EVENT1", "a"});
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(Logged(32, "filesToReceive size = 10"), Sent(GetFile("EVENT1", "a")), Slept(7));
}

TEST_F(NextFile, GetsNoFaultWhileMoreThanOneIsLeft) {
    SetAllFaults();
    protocol.rehashPending = true;
    protocol.filesToReceive = {{"EVENT1", "a"}, {"EVENT1", "b"}, {"EVENT1", "c"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(Logged(32, "filesToReceive size = 2"), Sent(GetFile("EVENT1", "b")), Slept(1));
    ExpectAllFaults();
    EXPECT_TRUE(protocol.rehashPending);
}

TEST_F(NextFile, IsRequestedPlainlyAndWithoutPauseWhenItIsTheLast) {
    protocol.filesToReceive = {{"EVENT1", "a"}, {"EVENT1", "b"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(Logged(32, "filesToReceive size = 1"),
                   Logged(32, "calling SendFileRequest(EVENT1/b, false)"), Sent(GetFile("EVENT1", "b")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "b"}}));
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(NextFile, IsRequestedWithANewHashAfterTheRehashTestHasQueuedIt) {
    protocol.rehashPending = true;
    protocol.filesToReceive = {{"EVENT1", "b"}, {"EVENT1", "b"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(Logged(32, "filesToReceive size = 1"),
                   Logged(32, "calling SendFileRequest(EVENT1/b, true)"),
                   Sent(GetFileWithNewHash("EVENT1", "b")));
    EXPECT_TRUE(protocol.rehashPending);
}

TEST_F(NextFile, IsTheReportThatTheEventIsCompleteWhenNoneIsLeft) {
    protocol.filesToReceive = {{"EVENT1", "a"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(Logged(32, "filesToReceive size = 0"), Logged(16, "Sending EVENT_XFER_COMPLETE"),
                   Saved("/mnt/hd/outgoingETCstring",
                         "<msg req=\"EVENT_XFER_COMPLETE\" reid=\"EVENT1\" protocolVersion=\"2.0\" />\n"),
                   Sent(R"(<msg req="EVENT_XFER_COMPLETE" reid="EVENT1" protocolVersion="2.0" />)"));
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
    EXPECT_FALSE(protocol.fileRequestPending);
}

TEST_F(NextFile, GetsNoFaultWhenNoneIsLeft) {
    SetAllFaults();
    protocol.filesToReceive = {{"EVENT1", "a"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(CompletedEvent("EVENT1"));
    ExpectAllFaults();
}

TEST_F(NextFile, IsReportedCompleteAlsoWhenTheReportCannotBeSaved) {
    NextSaveFails();
    protocol.filesToReceive = {{"EVENT1", "a"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(CompletedEvent("EVENT1"));
}

TEST_F(NextFile, IsReportedCompleteUnderTheEventInProgressWhateverTheFilesEvent) {
    protocol.filesToReceive = {{"OTHER", "a"}};
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(CompletedEvent("EVENT1"));
}

TEST_F(NextFile, IsReportedCompleteWhenNothingWasQueued) {
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(CompletedEvent("EVENT1"));
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
}

TEST_F(NextFile, IsReportedCompleteWithAnEmptyIdentifierWhenThereIsNoEvent) {
    protocol.events.clear();
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(CompletedEvent(""));
    EXPECT_TRUE(protocol.events.empty());
}

/// The last file of an event is next, with a fault switched on.
class LastFile : public NextFile {
 protected:
    LastFile() { protocol.filesToReceive = {{"EVENT1", "first"}, {"EVENT1", "FILE.mpg"}}; }

    static Entry OneLeft() { return Logged(32, "filesToReceive size = 1"); }
};

TEST_F(LastFile, IsRequestedUnderADamagedIdentifierFirst) {
    protocol.invalidFile = true;
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=0"),
                   Sent(GetFile("NT1", "FILE.mpg")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"NT1", "FILE.mpg"}, {"EVENT1", "FILE.mpg"}}));
    EXPECT_TRUE(protocol.invalidFile);
    EXPECT_EQ(protocol.invalidFileCount, 0U);
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(LastFile, IsRequestedUnderADamagedNameSecond) {
    protocol.invalidFile = true;
    protocol.invalidFileCount = 1;
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=1"),
                   Sent(GetFile("EVENT1", "E.mpg")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "E.mpg"}, {"EVENT1", "FILE.mpg"}}));
    EXPECT_FALSE(protocol.invalidFile);
    EXPECT_EQ(protocol.invalidFileCount, 1U);
}

TEST_F(LastFile, IsNotRequestedAtAllAfterTwoRefusalsAheadOfTheFault) {
    for (const std::uint32_t count : {2U, 3U, 4294967295U}) {
        protocol.filesToReceive = {{"EVENT1", "first"}, {"EVENT1", "FILE.mpg"}};
        protocol.invalidFile = true;
        protocol.invalidFileCount = count;
        protocol.CheckFileTestOptions();
        EXPECT_JOURNAL(OneLeft(),
                       Logged(32, "processing 'invalidFile' option, cnt=" + std::to_string(count)));
        EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "FILE.mpg"}}));
        EXPECT_TRUE(protocol.invalidFile);
        EXPECT_FALSE(protocol.fileRequestPending);
    }
}

TEST_F(LastFile, LosesAShortIdentifierEntirely) {
    for (const std::string reid : {"", "E", "E1", "E12"}) {
        protocol.invalidFile = true;
        protocol.filesToReceive = {{reid, "first"}, {reid, "x"}};
        protocol.CheckFileTestOptions();
        EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=0"),
                       Sent(GetFile("", "x")));
        EXPECT_EQ(protocol.filesToReceive, (Files{{"", "x"}, {reid, "x"}}));
    }
}

TEST_F(LastFile, LosesAShortNameEntirely) {
    for (const std::string file : {"", "x", "xy", "xyz"}) {
        protocol.invalidFile = true;
        protocol.invalidFileCount = 1;
        protocol.filesToReceive = {{"E1", "first"}, {"E1", file}};
        protocol.CheckFileTestOptions();
        EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=1"),
                       Sent(GetFile("E1", "")));
        EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", ""}, {"E1", file}}));
    }
}

TEST_F(LastFile, IsRequestedAfterTheMarkerOfTheTransportFaultIsSetOrCannotBeSet) {
    for (const int status : {0, -1, 256}) {
        protocol.filesToReceive = {{"EVENT1", "first"}, {"EVENT1", "FILE.mpg"}};
        protocol.transportException = true;
        NextSystemReturns(status);
        protocol.CheckFileTestOptions();
        EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'transportException' option"),
                       Ran("touch /mnt/hd/velloranFail"), Sent(GetFile("EVENT1", "FILE.mpg")));
        EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "FILE.mpg"}, {"EVENT1", "FILE.mpg"}}));
        EXPECT_TRUE(protocol.transportException);
        EXPECT_TRUE(protocol.fileRequestPending);
    }
}

TEST_F(LastFile, IsRequestedPlainlyAheadOfItsRehash) {
    protocol.rehash = true;
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'rehash' option"), Sent(GetFile("EVENT1", "FILE.mpg")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "FILE.mpg"}, {"EVENT1", "FILE.mpg"}}));
    EXPECT_FALSE(protocol.rehash);
    EXPECT_TRUE(protocol.rehashPending);
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(LastFile, IsRequestedTwiceInARowWithoutANewHashAlsoInTheRehashTest) {
    for (const bool inRehashTest : {false, true}) {
        protocol.filesToReceive = {{"EVENT1", "first"}, {"EVENT1", "FILE.mpg"}};
        protocol.xferInProgress = true;
        protocol.rehashPending = inRehashTest;
        protocol.CheckFileTestOptions();
        EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'xferInProgress' option"),
                       Sent(GetFile("EVENT1", "FILE.mpg")), Sent(GetFile("EVENT1", "FILE.mpg")));
        EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "FILE.mpg"}}));
        EXPECT_FALSE(protocol.xferInProgress);
        EXPECT_EQ(protocol.rehashPending, inRehashTest);
        EXPECT_TRUE(protocol.fileRequestPending);
    }
}

TEST_F(LastFile, GetsTheBadFileFaultAheadOfAllOthers) {
    SetAllFaults();
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=0"),
                   Sent(GetFile("NT1", "FILE.mpg")));
    ExpectAllFaults();
}

TEST_F(LastFile, GetsNoOtherFaultWhileTheBadFileFaultIsSilent) {
    SetAllFaults();
    protocol.invalidFileCount = 2;
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'invalidFile' option, cnt=2"));
    ExpectAllFaults();
}

TEST_F(LastFile, GetsTheTransportFaultAheadOfRehashAndDoubleRequest) {
    SetAllFaults();
    protocol.invalidFile = false;
    protocol.CheckFileTestOptions();
    EXPECT_JOURNAL(OneLeft(), Logged(32, "processing 'transportException' option"),
                   Ran("touch /mnt/hd/velloranFail"), Sent(GetFile("EVENT1", "FILE.mpg")));
    EXPECT_TRUE(protocol.rehash);
    EXPECT_TRUE(protocol.xferInProgress);
    EXPECT_FALSE(protocol.rehashPending);
}

}  // namespace
