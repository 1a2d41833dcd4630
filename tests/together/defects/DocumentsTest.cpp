#include <csignal>

#include "tests/together/defects/DefectTest.h"

// Documents that are not a message, or not XML.

namespace {

struct NoReq10 : Defect10 {};
struct NoReq20 : Defect20 {};

TEST_F(NoReq10, IsIgnored) {
    Start({}, {"--on", "XML"});
    Opens();
    Logs(1, "INVALID XML RECEIVED");
    Stalls("GET_FILE");
}

TEST_F(NoReq20, IsIgnored) {
    Start({});
    Logs(1, "INVALID XML RECEIVED");
    Stalls("UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST");
}

struct NoMsg10 : Defect10 {};
struct NoMsg20 : Defect20 {};

TEST_F(NoMsg10, EndsTheHarnessWithoutALine) {
    Start({});
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ("", harness->StandardError());
    DvrMissesTheHarness("GET_XML or UPDATE_CONFIGURATION");
}

TEST_F(NoMsg20, EndsTheHarnessWithoutALine) {
    Start({}, {"--on", "EVENT_LIST"});
    Opens();
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ("", harness->StandardError());
    DvrMissesTheHarness("NEXT_EVENT");
}

struct MalformedXml10 : Defect10 {};
struct MalformedXml20 : Defect20 {};

TEST_F(MalformedXml10, OnOk) {
    Start({});
    Logs(1, "error: 1:Error parsing Element.");
    Logs(1, "row: 1:6");
    Fails(kHandleMessage10, kNoError, "GET_XML or UPDATE_CONFIGURATION");
    Marks({"OK"});
}

TEST_F(MalformedXml10, OnXml) {
    Start({}, {"--on", "XML"});
    Opens();
    Logs(1, "error: 1:Error reading Element value.");
    Logs(1, "row: 0:0");  // the end of the document has no position
    Fails(kHandleMessage10, kNoError, "GET_FILE");
    Marks({"XML"});
}

TEST_F(MalformedXml20, OnOk) {
    Start({});
    Logs(1, "error: 1:Error parsing Element.");
    Logs(1, "row: 1:15");
    Fails(kHandleMessage20, kNoError, "UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST");
    Marks({"OK"});
}

TEST_F(MalformedXml20, OnEvent) {
    Start({}, {"--on", "EVENT"});
    Opens();
    Lists();
    Logs(1, "error: 1:Error reading Element value.");
    Logs(1, "row: 0:0");
    Fails(kHandleMessage20, kNoError, "GET_FILE");
    Marks({"EVENT"});
}

}  // namespace
