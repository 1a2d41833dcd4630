#include <csignal>

#include "tests/together/defects/DefectTest.h"

// Frames whose prefix is not a number, or not the text's length, and texts with wrong bytes.

namespace {

struct BadPrefix10 : Defect10 {};
struct BadPrefix20 : Defect20 {};

TEST_F(BadPrefix10, EndsTheHarness) {
    Start({});
    harness->LogsInFull({{2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix"}});
    Fails(kGetMessage, "expectedSize not_eq -1", "GET_XML or UPDATE_CONFIGURATION");
    Marks({"OK"});
}

TEST_F(BadPrefix20, EndsTheHarness) {
    Start({}, {"--on", "EVENT"});
    Opens();
    Lists();
    harness->LogsUpTo(2, "Read7BitEncodedInt:badly formatted 7 bit string length prefix");
    Fails(kGetMessage, "expectedSize not_eq -1", "GET_FILE");
    Marks({"EVENT"});
}

struct NegativePrefix10 : Defect10 {};
struct NegativePrefix20 : Defect20 {};

TEST_F(NegativePrefix10, EndsTheHarness) {
    Start({});
    harness->LogsInFull({{1, "expecting a message of -2 bytes"}});
    harness->EndsBySignal(SIGABRT);
    DvrMissesTheHarness("GET_XML or UPDATE_CONFIGURATION");
    Marks({"OK"});
}

TEST_F(NegativePrefix20, EndsTheHarness) {
    Start({}, {"--on", "EVENT_LIST"});
    Opens();
    harness->LogsUpTo(1, "expecting a message of -2 bytes");
    harness->EndsBySignal(SIGABRT);
    DvrMissesTheHarness("NEXT_EVENT");
    Marks({"EVENT_LIST"});
}

struct EmptyFrame10 : Defect10 {};
struct EmptyFrame20 : Defect20 {};

TEST_F(EmptyFrame10, EndsTheHarness) {
    Start({});
    harness->LogsInFull({{1, "expecting a message of 0 bytes"},
                         {1, "read success:0"},
                         {32, "GetMessage:incoming message, bytes 1 to 0:"},
                         {1, "error: 1:Error document empty."},
                         {1, "row: 0:0"}});
    Fails(kHandleMessage10, kNoError, "GET_XML or UPDATE_CONFIGURATION");
    Marks({"OK"});
}

TEST_F(EmptyFrame20, EndsTheHarness) {
    Start({}, {"--on", "EVENT"});
    Opens();
    Lists();
    harness->LogsUpTo(1, "expecting a message of 0 bytes");
    harness->LogsInFull({{1, "read success:0"},
                         {32, "GetMessage:incoming message, bytes 1 to 0:"},
                         {1, "error: 1:Error document empty."},
                         {1, "row: 0:0"}});
    Fails(kHandleMessage20, kNoError, "GET_FILE");
    Marks({"EVENT"});
}

struct LongPrefix10 : Defect10 {};
struct LongPrefix20 : Defect20 {};

TEST_F(LongPrefix10, LeavesTheHarnessWaitingForTheRest) {
    Start({});
    harness->LogsInFull({{1, "expecting a message of 25 bytes"}});
    dvr->EndsWithStatus(3, "expected GET_XML or UPDATE_CONFIGURATION, found nothing within 1000 ms");
    harness->LogsInFull({{1, "EOF at: 15  exp=25"}, {1, "read success:15"}});
    harness->FailsAssertion(kGetMessage, "readBytes == expectedSize");
    Marks({"OK"});
}

TEST_F(LongPrefix20, TakesTheNextMessageForTheRest) {
    // All of the second OK, including its prefix: it is lost.
    Start({}, {"--defect", "double"}, "=38");
    harness->LogsInFull({{1, "expecting a message of 75 bytes"},
                         {1, "read success:75"},
                         {32,
                          "GetMessage:incoming message, bytes 1 to 75:"
                          "<msg req=\"OK\" protocolVersion=\"2.0\"/>%"
                          "<msg req=\"OK\" protocolVersion=\"2.0\"/>"}});
    ReachesFirstFile();
    ExportsFiles();
    Completes();
    Marks({"OK", "OK"});
}

struct ShortPrefix10 : Defect10 {};
struct ShortPrefix20 : Defect20 {};

TEST_F(ShortPrefix10, EndsTheHarness) {
    Start({});
    harness->LogsInFull({{1, "expecting a message of 5 bytes"},
                         {1, "read success:5"},
                         {32, "GetMessage:incoming message, bytes 1 to 5:<msg "},
                         {1, "error: 1:Error reading Attributes."},
                         {1, "row: 1:5"}});
    Fails(kHandleMessage10, kNoError, "GET_XML or UPDATE_CONFIGURATION");
    Marks({"OK"});
}

TEST_F(ShortPrefix20, EndsTheHarness) {
    Start({}, {"--on", "EVENT_LIST"}, "=1");
    Opens();
    Logs(1, "error: 1:Error reading end tag.");
    Logs(1, "row: 0:0");
    Fails(kHandleMessage20, kNoError, "NEXT_EVENT");
    Marks({"EVENT_LIST"});
}

struct Garble10 : Defect10 {};
struct Garble20 : Defect20 {
    /// @return the text that the harness receives in a world of its own
    std::string TextWithSeed(const std::string& seed, Here here = Here::current()) {
        const World fresh;
        SetUp();
        Start({}, {"--seed", seed}, "=5", here);
        harness->LogsInFull({{1, "expecting a message of 37 bytes"}, {1, "read success:37"}}, here);
        const LogLine line = ParseLogLine(harness->TakesRawLine(here));
        dvr.reset();
        harness.reset();
        return line.text;
    }
};

TEST_F(Garble10, IsAsTheSeedHasIt) {
    Start({}, {"--seed", "1"});
    harness->LogsInFull({{1, "expecting a message of 15 bytes"},
                         {1, "read success:15"},
                         {32, "GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/j"},
                         {1, "error: 1:Error: empty tag."},
                         {1, "row: 1:15"}});
    Fails(kHandleMessage10, kNoError, "GET_XML or UPDATE_CONFIGURATION");
    Marks({"OK"});
    Notes("seed 1");
}

TEST_F(Garble20, RepeatsItselfWithTheSeed) {
    const std::string text = TextWithSeed("1");
    EXPECT_EQ(text, TextWithSeed("1"));
    EXPECT_NE(text, TextWithSeed("2"));
}

}  // namespace
