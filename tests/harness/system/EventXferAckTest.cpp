#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

using std::chrono::milliseconds;

class EventAcknowledgement : public Dialect20 {
 protected:
    /// Has listed E1 and E2 and waits for E1.
    void SetUp() override {
        Start();
        Lists({"E1", "E2"});
        dvr->Receives(v2::NextEvent("E1"));
    }
};

TEST_F(EventAcknowledgement, IsIgnoredWithoutReid) {
    dvr->Sends(Message("EVENT_XFER_ACK"));
    harness->Logs(2, "Got EVENT_XFER_ACK with no reid attribute");
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

TEST_F(EventAcknowledgement, IsIgnoredForAnotherEvent) {
    dvr->Sends(EventXferAck("E2"));
    harness->Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp='E1'  act='E2'");
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

using EventAcknowledgementUnasked = Dialect20;

TEST_F(EventAcknowledgementUnasked, IsIgnored) {
    Start();
    dvr->Sends(EventXferAck("E1"));
    harness->Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp=''  act='E1'");
    dvr->Sends(EventXferAck(""));
    harness->Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp=''  act=''");
    Opens();
    Ends();
}

using Done20 = Dialect20;

TEST_F(Done20, AnnouncesADuration) {
    Start({"-d", "30"});
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ReceivesDone("<msg req=\"DONE\" protocolVersion=\"2.0\" duration=\"30\" />");
    Ends();
}

class EarlyClose : public Dialect20 {
 protected:
    void ClosesAfterDone(const std::string& done = v2::kDone) {
        ReceivesDone(done);
        Closes();
    }
};

TEST_F(EarlyClose, EndsTheExportAfterTheFirstOfTwoEvents) {
    Start({"-c", "1"});
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    const Clock::time_point start = Clock::now();
    Acknowledges("E1");
    ClosesAfterDone();
    EXPECT_GE(Clock::now() - start, milliseconds(250 + 1000));
    harness->StopsOnInterrupt();
}

TEST_F(EarlyClose, AnnouncesADurationWithDone) {
    Start({"-c", "1", "-d", "0x1e"});
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ClosesAfterDone("<msg req=\"DONE\" protocolVersion=\"2.0\" duration=\"30\" />");
    harness->StopsOnInterrupt();
}

TEST_F(EarlyClose, EndsTheExportAfterTheThirdOfFiveEvents) {
    Start({"-c", "3"});
    Lists({"E1", "E2", "E3", "E4", "E5"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Acknowledges("E2");
    dvr->Receives(v2::NextEvent("E3"));
    Acknowledges("E3");
    ClosesAfterDone();
    harness->StopsOnInterrupt();
}

TEST_F(EarlyClose, ClosesAlsoAfterTheOnlyEvent) {
    Start({"-c", "1"});
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ClosesAfterDone();
    harness->StopsOnInterrupt();
}

TEST_F(EarlyClose, KeepsTheConnectionWhenTheEventsRunOutFirst) {
    Start({"-c", "3"});
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ReceivesDone();
    Opens();
    Ends();
}

TEST_F(EarlyClose, DoesNotCountTheEventThatRunsOut) {
    // The last event ends the export and leaves the count unchanged: the count goes down only before another
    // event.
    Start({"-c", "2"});
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ReceivesDone();
    Lists({"E2", "E3", "E4"});
    dvr->Receives(v2::NextEvent("E2"));
    Acknowledges("E2");
    dvr->Receives(v2::NextEvent("E3"));
    Acknowledges("E3");
    ClosesAfterDone();
    harness->StopsOnInterrupt();
}

TEST_F(EarlyClose, LeavesTheOtherEventsToTheNextConnection) {
    Start({"-c", "1"});
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ClosesAfterDone();
    Reconnect();
    Opens();
    Lists({"E3"});
    dvr->Receives(v2::NextEvent("E2"));
    Acknowledges("E2");
    ClosesAfterDone();
    Reconnect();
    Lists({"E4"});
    dvr->Receives(v2::NextEvent("E3"));
    Ends();
}

TEST_F(EarlyClose, LeavesTheOtherFilesToTheNextConnection) {
    Start({"-c", "1"});
    Opens();
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    Describes("E1", Description("E1", {"m1", "a"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Acknowledges("E1");
    ClosesAfterDone();
    Reconnect();
    Describes("E2", Description("E2", {"m2"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Ends();
}

}  // namespace
