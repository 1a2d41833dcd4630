#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

class TRANSPORT_EXCEPTION : public Dialogue {
 protected:
    TRANSPORT_EXCEPTION() {
        protocol.events = {"E1", "E2"};
        protocol.filesToReceive = {{"E1", "b"}, {"E1", "b"}};
    }

    static Entry Reid(const std::string& reid) {
        return Logged(16, "TRANSPORT_EXCEPTION 'reid' attribute = '" + reid + "'");
    }
    static Entry Missing() { return Logged(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message"); }
    static Entry Mismatch(const std::string& expected) {
        return Logged(2, "'reid' attribute does not match expected: '" + expected + "'");
    }
    static Entry RemovedMarker() { return Ran("rm /mnt/hd/velloranFail"); }
};

TEST_F(TRANSPORT_EXCEPTION, EndsTheFaultAndRequestsTheFileAgainAlsoWhenTheMarkerCannotBeRemoved) {
    for (const int status : {0, -1, 256}) {
        protocol.filesToReceive = {{"E1", "b"}, {"E1", "b"}};
        protocol.transportException = true;
        NextSystemReturns(status);
        EXPECT_REACTION(TransportException("E1"), Reid("E1"), RemovedMarker(), RequestedLastFile("E1", "b"));
        EXPECT_FALSE(protocol.transportException);
        EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "b"}}));
    }
    EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
    EXPECT_EQ(protocol.invalidFileCount, 0U);
}

TEST_F(TRANSPORT_EXCEPTION, OfAnotherIdentifierIsReportedTwiceAndActedUpon) {
    protocol.transportException = true;
    EXPECT_REACTION(TransportException("E2"), Reid("E2"), Missing(), Mismatch("E1"), RemovedMarker(),
                    RequestedLastFile("E1", "b"));
    EXPECT_FALSE(protocol.transportException);
}

TEST_F(TRANSPORT_EXCEPTION, WithoutIdentifierIsReportedOnceAndActedUpon) {
    protocol.transportException = true;
    EXPECT_REACTION(Msg("TRANSPORT_EXCEPTION"), Missing(), RemovedMarker(), RequestedLastFile("E1", "b"));
    EXPECT_FALSE(protocol.transportException);
}

TEST_F(TRANSPORT_EXCEPTION, WithoutMsgHasNoIdentifier) {
    TiXmlDocument document;
    document.Parse(R"(<other reid="E1" />)");
    protocol.Handle_TRANSPORT_EXCEPTION(document);
    EXPECT_JOURNAL(Missing(), RemovedMarker(), RequestedLastFile("E1", "b"));
}

TEST_F(TRANSPORT_EXCEPTION, IsComparedWithTheFileAndNotWithTheEventInProgress) {
    protocol.filesToReceive = {{"FILES", "b"}, {"FILES", "b"}};
    EXPECT_REACTION(TransportException("E1"), Reid("E1"), Missing(), Mismatch("FILES"), RemovedMarker(),
                    RequestedLastFile("FILES", "b"));
    protocol.filesToReceive = {{"FILES", "b"}, {"FILES", "b"}};
    EXPECT_REACTION(TransportException("FILES"), Reid("FILES"), RemovedMarker(),
                    RequestedLastFile("FILES", "b"));
}

TEST_F(TRANSPORT_EXCEPTION, ThatNobodyProvokedRemovesMarkerAndFileAllTheSame) {
    protocol.filesToReceive = {{"E1", "a"}, {"E1", "b"}, {"E1", "c"}};
    EXPECT_REACTION(TransportException("E1"), Reid("E1"), RemovedMarker(),
                    Logged(32, "filesToReceive size = 2"), Sent(GetFile("E1", "b")), Slept(1));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "b"}, {"E1", "c"}}));
}

TEST_F(TRANSPORT_EXCEPTION, OnTheLastFileCompletesTheEvent) {
    protocol.filesToReceive = {{"E1", "b"}};
    EXPECT_REACTION(TransportException("E1"), Reid("E1"), RemovedMarker(), CompletedEvent("E1"));
}

TEST_F(TRANSPORT_EXCEPTION, WithNothingQueuedCompletesTheEvent) {
    protocol.filesToReceive.clear();
    EXPECT_REACTION(TransportException("E1"), Reid("E1"), Missing(), Mismatch(""), RemovedMarker(),
                    CompletedEvent("E1"));
    EXPECT_TRUE(protocol.filesToReceive.empty());
    EXPECT_EQ(protocol.events, (Events{"E1", "E2"}));
}

TEST_F(TRANSPORT_EXCEPTION, WithNothingQueuedExpectsAnEmptyIdentifier) {
    protocol.filesToReceive.clear();
    EXPECT_REACTION(TransportException(""), Reid(""), RemovedMarker(), CompletedEvent("E1"));
}

TEST_F(TRANSPORT_EXCEPTION, WithNothingQueuedAndNoEventCompletesOneWithoutIdentifier) {
    protocol.filesToReceive.clear();
    protocol.events.clear();
    EXPECT_REACTION(Msg("TRANSPORT_EXCEPTION"), Missing(), RemovedMarker(), CompletedEvent(""));
}

TEST_F(TRANSPORT_EXCEPTION, LetsTheNextFaultHaveItsTurn) {
    protocol.transportException = true;
    protocol.rehash = true;
    EXPECT_REACTION(TransportException("E1"), Reid("E1"), RemovedMarker(),
                    Logged(32, "filesToReceive size = 1"), Logged(32, "processing 'rehash' option"),
                    Sent(GetFile("E1", "b")));
}

class XFER_IN_PROGRESS : public Dialogue {
 protected:
    XFER_IN_PROGRESS() {
        protocol.events = {"E1"};
        protocol.filesToReceive = {{"E1", "b"}};
        protocol.fileRequestPending = true;
        protocol.xferInProgress = true;
    }

    void ExpectUnchanged() const {
        EXPECT_EQ(protocol.events, Events{"E1"});
        EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "b"}}));
        EXPECT_TRUE(protocol.fileRequestPending);
        EXPECT_TRUE(protocol.xferInProgress);
        EXPECT_EQ(protocol.invalidFileCount, 0U);
    }
};

TEST_F(XFER_IN_PROGRESS, OfAnyIdentifierIsOnlyLogged) {
    for (const std::string reid : {"E1", "other"}) {
        EXPECT_REACTION(Msg("XFER_IN_PROGRESS", R"( reid=")" + reid + R"(")"),
                        Logged(16, "XFER_IN_PROGRESS 'reid' attribute = '" + reid + "'"));
        ExpectUnchanged();
    }
}

TEST_F(XFER_IN_PROGRESS, WithoutIdentifierIsReported) {
    EXPECT_REACTION(Msg("XFER_IN_PROGRESS"),
                    Logged(2, "'reid' attribute missing from XFER_IN_PROGRESS message"));
    ExpectUnchanged();
}

TEST_F(XFER_IN_PROGRESS, WithoutMsgHasNoIdentifier) {
    TiXmlDocument document;
    document.Parse(R"(<other reid="E1" />)");
    protocol.Handle_XFER_IN_PROGRESS(document);
    EXPECT_JOURNAL(Logged(2, "'reid' attribute missing from XFER_IN_PROGRESS message"));
}

}  // namespace
