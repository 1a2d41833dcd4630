#include "tests/harness/unit/v2_0/Dialogue.h"

namespace {

class EVENT_XFER_ACK : public Dialogue {
 protected:
    EVENT_XFER_ACK() { protocol.events = {"E1", "E2", "E3"}; }

    static Entry Got(const std::string& reid) {
        return Logged(32, "Got EVENT_XFER_ACK for: reid='" + reid + "'");
    }
    static Entry Unexpected(const std::string& expected, const std::string& actual) {
        return Logged(2,
                      "In EVENT_XFER_ACK, got unexpected reid: exp='" + expected + "'  act='" + actual + "'");
    }
    static Entry SendingDone() { return Logged(16, "Sending DONE"); }
};

TEST_F(EVENT_XFER_ACK, DropsTheEventAndAsksForTheNext) {
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), Sent(NextEvent("E2")));
    EXPECT_EQ(protocol.events, (Events{"E2", "E3"}));
    EXPECT_TRUE(protocol.eventRequestPending);
    EXPECT_EQ(protocol.closeEarly, 0);
}

TEST_F(EVENT_XFER_ACK, OfTheLastEventEndsTheExportAndKeepsTheConnection) {
    protocol.events = {"E1"};
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(), Sent(kDone));
    EXPECT_TRUE(protocol.events.empty());
    EXPECT_FALSE(protocol.eventRequestPending);
    EXPECT_EQ(protocol.closeEarly, 0);
}

TEST_F(EVENT_XFER_ACK, LeavesTheFilesAlone) {
    protocol.filesToReceive = {{"E1", "a"}};
    protocol.fileRequestPending = true;
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), Sent(NextEvent("E2")));
    EXPECT_EQ(protocol.filesToReceive, (Files{{"E1", "a"}}));
    EXPECT_TRUE(protocol.fileRequestPending);
}

TEST_F(EVENT_XFER_ACK, WithoutReidIsReported) {
    protocol.closeEarly = 1;
    EXPECT_REACTION(Msg("EVENT_XFER_ACK"), Logged(2, "Got EVENT_XFER_ACK with no reid attribute"));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2", "E3"}));
    EXPECT_EQ(protocol.closeEarly, 1);
}

TEST_F(EVENT_XFER_ACK, WithoutMsgHasNoReid) {
    TiXmlDocument document;
    document.Parse(R"(<other reid="E1" />)");
    EXPECT_EQ(protocol.Handle_EVENT_XFER_ACK(document), VelProtocolBase::MSG_CONTINUE);
    EXPECT_JOURNAL(Logged(2, "Got EVENT_XFER_ACK with no reid attribute"));
    EXPECT_EQ(protocol.events, (Events{"E1", "E2", "E3"}));
}

TEST_F(EVENT_XFER_ACK, OfAnotherEventIsReportedAndLeavesTheRightOneToComeLater) {
    for (const int allowed : {1, 2}) {
        protocol.closeEarly = allowed;
        for (const std::string reid : {"E2", "e1", "E", "E11", ""}) {
            EXPECT_REACTION(Acknowledgement(reid), Unexpected("E1", reid));
        }
        EXPECT_EQ(protocol.closeEarly, allowed);
    }
    EXPECT_FALSE(protocol.eventRequestPending);
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), Sent(NextEvent("E2")));
}

TEST_F(EVENT_XFER_ACK, ThatNobodyAwaitsIsReported) {
    protocol.events.clear();
    protocol.closeEarly = 1;
    for (const std::string reid : {"E1", ""}) {
        EXPECT_REACTION(Acknowledgement(reid), Unexpected("", reid));
    }
}

TEST_F(EVENT_XFER_ACK, OfAnEmptyIdentifierMatchesAnEmptyOne) {
    protocol.events = {"", "E2"};
    EXPECT_REACTION(Acknowledgement(""), Got(""), Sent(NextEvent("E2")));
}

/// With -c: the export ends early.
class EarlyEnd : public EVENT_XFER_ACK {};

TEST_F(EarlyEnd, ComesAfterTheFirstEventAndClosesTheConnection) {
    protocol.closeEarly = 1;
    EXPECT_CLOSING_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(), Sent(kDone));
    EXPECT_EQ(protocol.events, (Events{"E2", "E3"}));
    EXPECT_EQ(protocol.closeEarly, 1);
    EXPECT_FALSE(protocol.eventRequestPending);
}

TEST_F(EarlyEnd, ClosesTheConnectionAlsoWhenNoEventIsLeft) {
    protocol.closeEarly = 1;
    protocol.events = {"E1"};
    EXPECT_CLOSING_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(), Sent(kDone));
}

TEST_F(EarlyEnd, ComesAfterTheThirdOfFiveEvents) {
    protocol.closeEarly = 3;
    protocol.events = {"E1", "E2", "E3", "E4", "E5"};
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), Sent(NextEvent("E2")));
    EXPECT_EQ(protocol.closeEarly, 2);
    EXPECT_REACTION(Acknowledgement("E2"), Got("E2"), Sent(NextEvent("E3")));
    EXPECT_EQ(protocol.closeEarly, 1);
    EXPECT_CLOSING_REACTION(Acknowledgement("E3"), Got("E3"), SendingDone(), Sent(kDone));
    EXPECT_EQ(protocol.closeEarly, 1);
    EXPECT_EQ(protocol.events, (Events{"E4", "E5"}));
}

TEST_F(EarlyEnd, IsNoneWhenTheEventsRunOutFirst) {
    protocol.closeEarly = 3;
    protocol.events = {"E1", "E2"};
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), Sent(NextEvent("E2")));
    EXPECT_REACTION(Acknowledgement("E2"), Got("E2"), SendingDone(), Sent(kDone));
    EXPECT_EQ(protocol.closeEarly, 2);
}

TEST_F(EarlyEnd, IsNoneForANegativeCountAndTheCountGoesOnDown) {
    protocol.closeEarly = -1;
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), Sent(NextEvent("E2")));
    EXPECT_EQ(protocol.closeEarly, -2);
    EXPECT_REACTION(Acknowledgement("E2"), Got("E2"), Sent(NextEvent("E3")));
    EXPECT_EQ(protocol.closeEarly, -3);
    EXPECT_REACTION(Acknowledgement("E3"), Got("E3"), SendingDone(), Sent(kDone));
    EXPECT_EQ(protocol.closeEarly, -3);
}

TEST_F(EarlyEnd, StaysInForceForTheNextConnection) {
    protocol.closeEarly = 1;
    EXPECT_CLOSING_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(), Sent(kDone));
    EXPECT_REACTION(Msg("OK"), Logged(1, "got an OK, sending GET_EVENT_LIST"), Sent(kGetEventList));
    EXPECT_REACTION(EventList("<event>E9</event>"), Logged(16, "'source' attribute = 'DVR 7'"),
                    Sent(NextEvent("E2")));
    EXPECT_EQ(protocol.events, (Events{"E2", "E3", "E9"}));
    EXPECT_EQ(protocol.socketFd, kSocket);
    EXPECT_CLOSING_REACTION(Acknowledgement("E2"), Got("E2"), SendingDone(), Sent(kDone));
}

class DONE : public EVENT_XFER_ACK {
 protected:
    DONE() { protocol.events = {"E1"}; }
};

TEST_F(DONE, CarriesNoDurationByDefault) {
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(),
                    Sent(R"(<msg req="DONE" protocolVersion="2.0" />)"));
}

TEST_F(DONE, CarriesTheDurationOfTheSwitch) {
    protocol.doneDuration = 30;
    EXPECT_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(),
                    Sent(R"(<msg req="DONE" protocolVersion="2.0" duration="30" />)"));
    EXPECT_EQ(protocol.doneDuration, 30);
}

TEST_F(DONE, CarriesTheLongestDuration) {
    protocol.doneDuration = 2147483647;
    protocol.closeEarly = 1;
    EXPECT_CLOSING_REACTION(Acknowledgement("E1"), Got("E1"), SendingDone(),
                            Sent(R"(<msg req="DONE" protocolVersion="2.0" duration="2147483647" />)"));
}

}  // namespace
