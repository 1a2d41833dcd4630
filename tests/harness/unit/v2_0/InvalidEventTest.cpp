#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

class INVALID_EVENT : public Dialogue {
 protected:
    INVALID_EVENT() { protocol.events = {"NT1", "EVENT1", "EVENT2"}; }

    static Entry Reid(const std::string& reid) {
        return Logged(16, "INVALID_EVENT 'reid' attribute = '" + reid + "'");
    }
    static Entry Mismatch(const std::string& expected) {
        return Logged(2, "'reid' attribute does not match expected: '" + expected + "'");
    }
    static Entry Missing() { return Logged(2, "'reid' attribute missing from INVALID_EVENT message"); }
    static Entry Unexpected() { return Logged(2, "Received unexpected INVALID_EVENT message!"); }
};

TEST_F(INVALID_EVENT, DropsTheDamagedEventAndAsksForTheTrueOne) {
    protocol.invalidEvent = true;
    EXPECT_REACTION(InvalidEvent("NT1"), Reid("NT1"), Sent(NextEvent("EVENT1")));
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
    EXPECT_FALSE(protocol.invalidEvent);
    EXPECT_TRUE(protocol.eventRequestPending);
    EXPECT_EQ(protocol.invalidFileCount, 0U);
}

TEST_F(INVALID_EVENT, OfAnotherIdentifierIsReportedAndActedUpon) {
    protocol.invalidEvent = true;
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Mismatch("NT1"), Sent(NextEvent("EVENT1")));
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
    EXPECT_FALSE(protocol.invalidEvent);
}

TEST_F(INVALID_EVENT, WithoutIdentifierIsReportedAndActedUpon) {
    EXPECT_REACTION(Msg("INVALID_EVENT"), Missing(), Sent(NextEvent("EVENT1")));
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
}

TEST_F(INVALID_EVENT, WithoutMsgHasNoIdentifier) {
    TiXmlDocument document;
    document.Parse(R"(<other reid="NT1" />)");
    protocol.Handle_INVALID_EVENT(document);
    EXPECT_JOURNAL(Missing(), Sent(NextEvent("EVENT1")));
}

TEST_F(INVALID_EVENT, ThatNobodyProvokedDropsTheEventInProgress) {
    protocol.events = {"EVENT1", "EVENT2"};
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Sent(NextEvent("EVENT2")));
    EXPECT_EQ(protocol.events, Events{"EVENT2"});
}

TEST_F(INVALID_EVENT, OnTheLastEventDropsItAndRequestsNothing) {
    protocol.events = {"EVENT1"};
    protocol.invalidEvent = true;
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"));
    EXPECT_TRUE(protocol.events.empty());
    EXPECT_FALSE(protocol.invalidEvent);
    EXPECT_FALSE(protocol.eventRequestPending);
}

TEST_F(INVALID_EVENT, WithoutAnyEventRequestsNothing) {
    protocol.events.clear();
    protocol.invalidEvent = true;
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Mismatch(""));
    EXPECT_TRUE(protocol.events.empty());
    EXPECT_FALSE(protocol.invalidEvent);
}

TEST_F(INVALID_EVENT, WithoutAnyEventTakesAnEmptyIdentifierForTheExpectedOne) {
    protocol.events.clear();
    EXPECT_REACTION(InvalidEvent(""), Reid(""));
}

TEST_F(INVALID_EVENT, DropsOneBrokenCopyAtATime) {
    protocol.events = {"", "NT1", "EVENT1"};
    protocol.invalidEvent = true;
    EXPECT_REACTION(InvalidEvent(""), Reid(""), Sent(NextEvent("NT1")));
    EXPECT_FALSE(protocol.invalidEvent);
    EXPECT_REACTION(InvalidEvent("NT1"), Reid("NT1"), Sent(NextEvent("EVENT1")));
    EXPECT_EQ(protocol.events, Events{"EVENT1"});
}

/// While files are pending, the report concerns a file.
class INVALID_EVENT_OfAFile : public INVALID_EVENT {
 protected:
    INVALID_EVENT_OfAFile() {
        protocol.events = {"EVENT1", "EVENT2"};
        protocol.filesToReceive = {{"NT1", "b.mpg"}, {"EVENT1", "b.mpg"}};
    }
};

TEST_F(INVALID_EVENT_OfAFile, BringsTheSecondHalfOfTheBadFileFault) {
    protocol.invalidFile = true;
    protocol.invalidEvent = true;
    EXPECT_REACTION(InvalidEvent("NT1"), Reid("NT1"), Mismatch("EVENT1"),
                    Logged(32, "filesToReceive size = 1"),
                    Logged(32, "processing 'invalidFile' option, cnt=1"), Sent(GetFile("EVENT1", "pg")));
    EXPECT_EQ(protocol.invalidFileCount, 1U);
    EXPECT_FALSE(protocol.invalidFile);
    EXPECT_TRUE(protocol.invalidEvent);
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "pg"}, {"EVENT1", "b.mpg"}}));
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
}

TEST_F(INVALID_EVENT_OfAFile, IsUnexpectedButCountedWithoutTheFault) {
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Unexpected(),
                    RequestedLastFile("EVENT1", "b.mpg"));
    EXPECT_EQ(protocol.invalidFileCount, 1U);
    EXPECT_EQ(protocol.filesToReceive, (Files{{"EVENT1", "b.mpg"}}));
    EXPECT_EQ(protocol.events, (Events{"EVENT1", "EVENT2"}));
}

TEST_F(INVALID_EVENT_OfAFile, WithoutIdentifierAndFaultReportsBoth) {
    EXPECT_REACTION(Msg("INVALID_EVENT"), Missing(), Unexpected(), RequestedLastFile("EVENT1", "b.mpg"));
    EXPECT_EQ(protocol.invalidFileCount, 1U);
}

TEST_F(INVALID_EVENT_OfAFile, IsComparedWithTheEventInProgressAndNotWithTheFile) {
    EXPECT_REACTION(InvalidEvent("NT1"), Reid("NT1"), Mismatch("EVENT1"), Unexpected(),
                    RequestedLastFile("EVENT1", "b.mpg"));
}

TEST_F(INVALID_EVENT_OfAFile, GoesOnToTheNextFileWhileMoreAreLeft) {
    protocol.filesToReceive = {{"EVENT1", "a"}, {"EVENT1", "b"}, {"EVENT1", "c"}};
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Unexpected(),
                    Logged(32, "filesToReceive size = 2"), Sent(GetFile("EVENT1", "b")), Slept(1));
}

TEST_F(INVALID_EVENT_OfAFile, CompletesTheEventWhenItWasTheLast) {
    protocol.filesToReceive = {{"EVENT1", "c"}};
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Unexpected(), CompletedEvent("EVENT1"));
}

TEST_F(INVALID_EVENT_OfAFile, WithoutAnyEventExpectsAnEmptyIdentifier) {
    protocol.events.clear();
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Mismatch(""), Unexpected(),
                    RequestedLastFile("EVENT1", "b.mpg"));
}

TEST_F(INVALID_EVENT_OfAFile, IsCountedAlsoWhenItSpoilsTheFault) {
    protocol.filesToReceive = {{"EVENT1", "a"}, {"EVENT1", "b"}, {"EVENT1", "c"}, {"EVENT1", "d"}};
    protocol.invalidFile = true;
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Logged(32, "filesToReceive size = 3"),
                    Sent(GetFile("EVENT1", "b")), Slept(1));
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Logged(32, "filesToReceive size = 2"),
                    Sent(GetFile("EVENT1", "c")), Slept(1));
    EXPECT_REACTION(InvalidEvent("EVENT1"), Reid("EVENT1"), Logged(32, "filesToReceive size = 1"),
                    Logged(32, "processing 'invalidFile' option, cnt=3"));
    EXPECT_EQ(protocol.invalidFileCount, 3U);
    EXPECT_TRUE(protocol.invalidFile);
}

}  // namespace
