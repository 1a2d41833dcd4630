#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

using Faults = Dialect20;

// -e: a damaged event.

TEST_F(Faults, RequestADamagedEventAheadOfTheTrueOne) {
    Start({"-e"});
    Opens();
    Lists({"ABC123", "X9"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent("123"));
    Refuses("123");
    dvr->Receives(v2::NextEvent("ABC123"));
    Acknowledges("ABC123");
    dvr->Receives(v2::NextEvent("X9"));
    Acknowledges("X9");
    ReceivesDone();
    Ends();
}

TEST_F(Faults, RequestADamagedEventOnce) {
    Start({"-e"});
    Lists({"ABC123"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent("123"));
    Refuses("123");
    dvr->Receives(v2::NextEvent("ABC123"));
    Lists({"DEF456"});
    dvr->Receives(v2::NextEvent("ABC123"));
    Ends();
}

TEST_F(Faults, PutADamagedEventInFrontForEachListUntilItIsRefused) {
    Start({"-e"});
    Lists({"ABC123456"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent("123456"));
    Lists({"X9"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent("456"));
    Refuses("456");
    dvr->Receives(v2::NextEvent("123456"));
    Refuses("123456");
    dvr->Receives(v2::NextEvent("ABC123456"));
    Ends();
}

class FaultsOfAShortEvent : public Dialect20, public testing::WithParamInterface<const char*> {};

TEST_P(FaultsOfAShortEvent, RequestAnEmptyOne) {
    Start({"-e"});
    Lists({GetParam()});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent(""));
    Refuses("");
    dvr->Receives(v2::NextEvent(GetParam()));
    Ends();
}

INSTANTIATE_TEST_SUITE_P(Of, FaultsOfAShortEvent, testing::Values("X", "E1", "ABC"),
                         [](const auto& row) { return std::string(row.param); });

TEST_F(Faults, TakeADescriptionWithoutReidForTheEmptyEvent) {
    Start({"-e"});
    Lists({"E1"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent(""));
    dvr->Sends("<msg req=\"EVENT\"><xmlFile>" + Escaped(Description("E1", {"m1"})) + "</xmlFile></msg>");
    harness->Logs(2, "Handle_EVENT_msg: 'reid' in escaped XML incorrect: exp=''  act='E1'");
    dvr->Receives(v2::GetFile("", "m1"));
    Ends();
}

TEST_F(Faults, LeaveAnEmptyListEmpty) {
    Start({"-e"});
    Lists({});
    harness->Logs(2, "could not find 'event' tag in EVENT_LIST message");
    harness->Logs(4, "Got EVENT_LIST message with no events");
    Opens();
    Ends();
}

// INVALID_EVENT about an event.

TEST_F(Faults, DropAnEventRefusedUnprovoked) {
    Start();
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    Refuses("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

TEST_F(Faults, DropTheEventInProgressWhateverIsRefused) {
    Start();
    Lists({"E1", "E2", "E3"});
    dvr->Receives(v2::NextEvent("E1"));
    dvr->Sends(InvalidEvent("E9"));
    harness->Logs(16, "INVALID_EVENT 'reid' attribute = 'E9'");
    harness->Logs(2, "'reid' attribute does not match expected: 'E1'");
    dvr->Receives(v2::NextEvent("E2"));
    dvr->Sends(Message("INVALID_EVENT"));
    harness->Logs(2, "'reid' attribute missing from INVALID_EVENT message");
    dvr->Receives(v2::NextEvent("E3"));
    Ends();
}

TEST_F(Faults, RequestNothingAfterTheLastEventIsRefused) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Refuses("E1");
    Lists({"E2"});
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

TEST_F(Faults, RequestNothingWhenNoEventIsThereToRefuse) {
    Start();
    dvr->Sends(InvalidEvent("E1"));
    harness->Logs(16, "INVALID_EVENT 'reid' attribute = 'E1'");
    harness->Logs(2, "'reid' attribute does not match expected: ''");
    dvr->Sends(InvalidEvent(""));
    harness->Logs(16, "INVALID_EVENT 'reid' attribute = ''");
    dvr->Sends(Message("INVALID_EVENT"));
    harness->Logs(2, "'reid' attribute missing from INVALID_EVENT message");
    Opens();
    Ends();
}

}  // namespace
