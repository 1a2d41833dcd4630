#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

using Xml10 = Dialect10;

struct Skipped {
    std::string name;
    std::string xml;
};

std::ostream& operator<<(std::ostream& out, const Skipped& row) {
    return out << row.xml;
}

class XmlWithoutEvents : public Dialect10, public testing::WithParamInterface<Skipped> {};

TEST_P(XmlWithoutEvents, AndWaits) {
    Connect();
    dvr->Sends(GetParam().xml);
    Opens();
    Ends();
}

INSTANTIATE_TEST_SUITE_P(
    In, XmlWithoutEvents,
    testing::Values(
        Skipped{"NoXmlFile", "<msg req=\"XML\"/>"},
        Skipped{"AnotherElement",
                "<msg req=\"XML\"><xml><string>&lt;recording-event "
                "reid='E1'/&gt;</string></xml></msg>"},
        Skipped{"NoString", "<msg req=\"XML\"><xmlFile/></msg>"},
        Skipped{"AnEmptyString", "<msg req=\"XML\"><xmlFile><string></string><string/></xmlFile></msg>"},
        Skipped{"AStringWithAnElement",
                "<msg req=\"XML\"><xmlFile><string><recording-event reid='E1'/></string></xmlFile></msg>"},
        Skipped{"NoRecordingEvent", Xml({"<event reid=\"E1\"/>"})},
        Skipped{"ARecordingEventFurtherIn", Xml({"<list><recording-event reid=\"E1\"/></list>"})}),
    [](const auto& row) { return row.param.name; });

TEST_F(Xml10, TakesTheEventsAroundSkippedStrings) {
    Connect();
    const std::string e1 = Escaped(Description("E1", {"m1"}));
    const std::string e2 = Escaped(Description("E2", {"m2"}));
    dvr->Sends("<msg req=\"XML\"><xmlFile><!--list--><string/><string>" + e1 + "</string><!--" + "between" +
               "--><string>" + Escaped("<other/>") + "</string>text<string>" + e2 +
               "</string></xmlFile></msg>");
    harness->Logs(32, "Found event E1");
    harness->Logs(32, "Found event E2");
    dvr->Receives(v1::GetFile("E1", "m1"));
    Ends();
}

TEST_F(Xml10, TakesTheSiblingsOfTheFirstStringWhateverTheirName) {
    Connect();
    const auto escaped = [](const char* id) { return Escaped(Description(id, {"m"})); };
    dvr->Sends("<msg req=\"XML\"><xmlFile><note>" + escaped("E0") + "</note><string>" + escaped("E1") +
               "</string><note>" + escaped("E2") + "</note></xmlFile></msg>");
    harness->Logs(32, "Found event E1");
    harness->Logs(32, "Found event E2");
    dvr->Receives(v1::GetFile("E1", "m"));
    Ends();
}

TEST_F(Xml10, ReportsAnEventWithoutVideoAsCompleteWithTheOthers) {
    Connect();
    dvr->Sends(Xml({Description("E0", {})}));
    harness->Logs(32, "Found event E0");
    Describes("E1", {"m1"});
    Completes("E1", "m1");
    IsDone({"E0", "E1"});
    harness->StopsOnInterrupt();
}

TEST_F(Xml10, TakesTheChildrenOfAStreamForFilesWhateverTheirName) {
    Connect();
    dvr->Sends(Xml(
        {"<recording-event reid=\"E1\"><video><streams><ignored><file name=\"no\"/></ignored>"
         "<stream name=\"no\"><file name=\"a\"/><clip name=\"b\"><file name=\"no\"/></clip></stream>"
         "<!--beside--><other><audio name=\"c\"/></other><stream/></streams></video></recording-event>"}));
    harness->Logs(32, "Found event E1");
    dvr->Receives(v1::GetFile("E1", "a"));
    Completes("E1", "a");
    dvr->Receives(v1::GetFile("E1", "b"));
    Completes("E1", "b");
    dvr->Receives(v1::GetFile("E1", "c"));
    Completes("E1", "c");
    IsDone({"E1"});
    harness->StopsOnInterrupt();
}

TEST_F(Xml10, RepeatsAnEventWithoutReidUntilItIsInterrupted) {
    Connect();
    dvr->Sends(Xml({Description("E1", {"m1"}), "<recording-event id=\"E2\"/>", Description("E3", {"m3"})}));
    harness->Logs(32, "Found event E1");
    for (int count = 0; count < 50; ++count) {
        harness->Logs(2, "Found event with no REID");
    }
    EXPECT_TRUE(harness->GetProcess().IsRunning());
    harness->GetsSignal(SIGINT);
    harness->LogsUpTo(1, "shutting down");
    harness->EndsWithStatus(44);
    EXPECT_EQ("", harness->StandardError());
    dvr->ReceivesEnd();
}

}  // namespace
