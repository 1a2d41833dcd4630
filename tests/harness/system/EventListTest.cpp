#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

using EventList20 = Dialect20;

TEST_F(EventList20, RequestsTheFirstListedEvent) {
    Start();
    dvr->Sends(
        "<msg req=\"EVENT_LIST\" source=\"unit "
        "7\"><events><event>ABC123</event><event>X9</event></events></msg>");
    harness->Logs(16, "'source' attribute = 'unit 7'");
    dvr->Receives(v2::NextEvent("ABC123"));
    Acknowledges("ABC123");
    dvr->Receives(v2::NextEvent("X9"));
    Ends();
}

TEST_F(EventList20, MissesTheSourceOfAList) {
    Start();
    dvr->Sends("<msg req=\"EVENT_LIST\"><events><event>E1</event></events></msg>");
    harness->Logs(2, "'source' attribute missing from EVENT_LIST message");
    dvr->Receives(v2::NextEvent("E1"));
    Ends();
}

struct EmptyList {
    std::string name;
    std::string content;  // of the message
    std::string warning;
};

std::ostream& operator<<(std::ostream& out, const EmptyList& row) {
    return out << row.content;
}

class EventListWithoutEvents : public Dialect20, public testing::WithParamInterface<EmptyList> {};

TEST_P(EventListWithoutEvents, AndWaits) {
    Start();
    dvr->Sends("<msg req=\"EVENT_LIST\" source=\"\">" + GetParam().content + "</msg>");
    harness->Logs(16, "'source' attribute = ''");
    harness->Logs(2, GetParam().warning);
    harness->Logs(4, "Got EVENT_LIST message with no events");
    Opens();
    Ends();
}

INSTANTIATE_TEST_SUITE_P(
    In, EventListWithoutEvents,
    testing::Values(EmptyList{"AListWithoutEvents", "", "could not find 'event' tag in EVENT_LIST message"},
                    EmptyList{"EmptyEvents", "<events/>", "could not find 'event' tag in EVENT_LIST message"},
                    EmptyList{"OtherElements", "<events><note>N</note></events>",
                              "could not find 'event' tag in EVENT_LIST message"},
                    EmptyList{"EventsOutsideEvents", "<event>E1</event>",
                              "could not find 'event' tag in EVENT_LIST message"},
                    EmptyList{"AnEventWithoutText", "<events><event/></events>",
                              "'event' found with no text"}),
    [](const auto& row) { return row.param.name; });

TEST_F(EventList20, WarnsOfAnEmptyEventAndTakesTheOthers) {
    Start();
    Lists({"E1", "", "E2"});
    harness->Logs(2, "'event' found with no text");
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

TEST_F(EventList20, TakesTheSiblingsOfTheFirstEventWhateverTheirName) {
    Start();
    dvr->Sends(
        "<msg req=\"EVENT_LIST\" "
        "source=\"DVR\"><events><note>E0</note><event>E1</event><note>N</note></events></msg>");
    harness->Logs(16, "'source' attribute = 'DVR'");
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("N"));
    Acknowledges("N");
    ReceivesDone();
    Ends();
}

TEST_F(EventList20, WarnsOfSiblingsThatAreNoElements) {
    Start();
    dvr->Sends(
        "<msg req=\"EVENT_LIST\" "
        "source=\"DVR\"><events><event>E1</event><!--E2-->E3<event>E4</event></events></msg>");
    harness->Logs(16, "'source' attribute = 'DVR'");
    harness->Logs(2, "'event' found with no text");
    harness->Logs(2, "'event' found with no text");
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E4"));
    Ends();
}

TEST_F(EventList20, KeepsAnEventThatIsListedTwice) {
    Start();
    Lists({"E1", "E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ReceivesDone();
    Ends();
}

TEST_F(EventList20, AppendsASecondListAndRequestsTheFrontAgain) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Lists({"E2"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

TEST_F(EventList20, EscapesWhatItSendsBack) {
    Start();
    Lists({"A&amp;&lt;\xc3\xbc>\""});
    dvr->Receives("<msg req=\"NEXT_EVENT\" reid='A&amp;&lt;\xc3\xbc&gt;&quot;' protocolVersion=\"2.0\" />");
    Ends();
}

}  // namespace
