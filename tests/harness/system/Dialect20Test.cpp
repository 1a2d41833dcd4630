#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

const char* const kHandleMessage = "virtual VelProtocolBase::e_MsgReturn VelProtocol_2_0::HandleMessage()";

using std::chrono::milliseconds;
using std::chrono::seconds;

using Protocol20 = Dialect20;

TEST_F(Protocol20, LogsAWholeExportLineByLine) {
    const std::string list =
        "<msg req=\"EVENT_LIST\" source=\"DVR\"><events><event>E1</event></events></msg>";
    const std::string event =
        "<msg req=\"EVENT\" reid=\"E1\"><xmlFile>&lt;recording-event "
        "reid=\"E1\"&gt;&lt;video&gt;&lt;metadata "
        "name=\"m1\"/&gt;&lt;/video&gt;&lt;/recording-event&gt;</xmlFile></msg>";
    harness.emplace(std::vector<std::string>{"-p", "2"});
    harness->Listens();
    dvr.emplace();
    dvr->Sends("<msg req=\"OK\"/>");
    dvr->Receives("<msg req=\"GET_EVENT_LIST\" protocolVersion=\"2.0\" />");
    dvr->Sends(list);
    dvr->Receives("<msg req=\"NEXT_EVENT\" reid=\"E1\" protocolVersion=\"2.0\" />");
    dvr->Sends(event);
    dvr->Receives("<msg req=\"GET_FILE\" reid=\"E1\" path=\"E1\" file=\"m1\" protocolVersion=\"2.0\" />");
    dvr->Sends("<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"m1\"/>");
    dvr->Receives("<msg req=\"EVENT_XFER_COMPLETE\" reid=\"E1\" protocolVersion=\"2.0\" />");
    dvr->Sends("<msg req=\"EVENT_XFER_ACK\" reid=\"E1\"/>");
    dvr->Receives("<msg req=\"DONE\" protocolVersion=\"2.0\" />");
    harness->LogsInFull(
        {{32, "'protocol' option set to 2"},
         {16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port())},
         {1, "expecting a message of 15 bytes"},
         {1, "read success:15"},
         {32, "GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>"},
         {1, "got an OK, sending GET_EVENT_LIST"},
         {64, "hdr[0]= 32"},
         {1, "expecting a message of 75 bytes"},
         {1, "read success:75"},
         {32, "GetMessage:incoming message, bytes 1 to 75:" + list},
         {16, "'source' attribute = 'DVR'"},
         {64, "hdr[0]= 38"},
         {1, "expecting a message of 163 bytes"},
         {1, "read success:163"},
         {32, "GetMessage:incoming message, bytes 1 to 163:" + event},
         {16, "'reid' attribute in EVENT msg = 'E1'"},
         {64, "hdr[0]= 4a"},
         {1, "expecting a message of 46 bytes"},
         {1, "read success:46"},
         {32,
          "GetMessage:incoming message, bytes 1 to 46:<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"m1\"/>"},
         {64, "Got FILE_COMPLETE for: reid=E1  file=m1"},
         {32, "filesToReceive size = 0"},
         {16, "Sending EVENT_XFER_COMPLETE"},
         {64, "hdr[0]= 41"},
         {1, "expecting a message of 37 bytes"},
         {1, "read success:37"},
         {32, "GetMessage:incoming message, bytes 1 to 37:<msg req=\"EVENT_XFER_ACK\" reid=\"E1\"/>"},
         {32, "Got EVENT_XFER_ACK for: reid='E1'"},
         {16, "Sending DONE"},
         {64, "hdr[0]= 28"}});
    harness->StopsOnInterrupt();
    dvr->ReceivesEnd();
}

TEST_F(Protocol20, ExportsEventByEvent) {
    Start();
    Opens();
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    Describes("E1", Description("E1", {"m1", "a"}));
    dvr->Receives(v2::GetFile("E1", "m1"));
    Completes("E1", "m1", 1);
    harness->Logs(32, "calling SendFileRequest(E1/a, false)");
    dvr->Receives(v2::GetFile("E1", "a"));
    Completes("E1", "a", 0);
    ReceivesEventXferComplete("E1");
    Acknowledges("E1");
    dvr->Receives(v2::NextEvent("E2"));
    Describes("E2", Description("E2", {"m2"}));
    dvr->Receives(v2::GetFile("E2", "m2"));
    Completes("E2", "m2", 0);
    ReceivesEventXferComplete("E2");
    Acknowledges("E2");
    ReceivesDone();
    Ends();
}

TEST_F(Protocol20, KeepsTheConnectionAfterDone) {
    Start();
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ReceivesDone();
    Opens();
    Lists({"E2"});
    dvr->Receives(v2::NextEvent("E2"));
    Acknowledges("E2");
    ReceivesDone();
    Ends();
}

// Pauses between files.

TEST_F(Protocol20, PausesASecondAfterTheRequestOfAFileThatIsNotTheLast) {
    Start();
    ReachesFirstFile("E1", {"m1", "a", "b"});
    const Clock::time_point start = Clock::now();
    Completes("E1", "m1", 2);
    dvr->Receives(v2::GetFile("E1", "a"));
    Completes("E1", "a", 1);
    const Clock::duration taken = Clock::now() - start;
    EXPECT_GE(taken, milliseconds(250 + 1000 + 250));
    EXPECT_LT(taken, milliseconds(250 + 1000 + 250) + seconds(3));
}

TEST_F(Protocol20, PausesAsLongAsToldAndAfterTheRequest) {
    Start({"-s", "4"});
    ReachesFirstFile("E1", {"m1", "a", "b"});
    const Clock::time_point start = Clock::now();
    Completes("E1", "m1", 2);
    dvr->Receives(v2::GetFile("E1", "a"));
    EXPECT_LT(Clock::now() - start, milliseconds(250) + seconds(3)) << "the request came after the pause";
    Completes("E1", "a", 1);
    const Clock::duration taken = Clock::now() - start;
    EXPECT_GE(taken, milliseconds(250 + 4000 + 250));
    EXPECT_LT(taken, milliseconds(250 + 4000 + 250) + seconds(3));
}

TEST_F(Protocol20, DoesNotPauseAfterTheRequestOfTheLastFile) {
    Start({"-s", "10"});
    ReachesFirstFile("E1", {"m1", "a"});
    const Clock::time_point start = Clock::now();
    Completes("E1", "m1", 1);
    harness->Logs(32, "calling SendFileRequest(E1/a, false)");
    dvr->Receives(v2::GetFile("E1", "a"));
    Completes("E1", "a", 0);
    ReceivesEventXferComplete("E1");
    EXPECT_LT(Clock::now() - start, milliseconds(500) + seconds(5));
    Ends();
}

// OK, and what the switches for updates make of it.

TEST_F(Protocol20, AnswersEveryOk) {
    Start();
    Opens();
    Opens();
    Ends();
}

TEST_F(Protocol20, OrdersAnUpgradeAheadOfTheExport) {
    Start({"-u"});
    for (int round = 0; round < 2; ++round) {
        dvr->Sends(Ok());
        harness->Logs(1, "got an OK, sending UPDATE_SOFTWARE");
        dvr->Receives(v2::kUpdateSoftware);
        harness->Logs(1, "got an OK, sending GET_EVENT_LIST");
        dvr->Receives(v2::kGetEventList);
    }
    dvr->Sends(Message("SOFTWARE_UPDATE_CONFIRM"));
    harness->Logs(16, "Got SOFTWARE_UPDATE_CONFIRM");
    Ends();
}

TEST_F(Protocol20, SendsABogusConfigurationInPlaceOfTheExport) {
    Start({"-g"});
    for (int round = 0; round < 2; ++round) {
        dvr->Sends(Ok());
        harness->Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
        dvr->Receives(v2::kUpdateConfiguration);
    }
    dvr->Sends(Message("CONFIGURATION_UPDATE_ERROR"));
    harness->Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    Ends();
}

TEST_F(Protocol20, OrdersAnUpgradeAheadOfTheBogusConfiguration) {
    Start({"-u", "-g"});
    dvr->Sends(Ok());
    harness->Logs(1, "got an OK, sending UPDATE_SOFTWARE");
    dvr->Receives(v2::kUpdateSoftware);
    harness->Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    dvr->Receives(v2::kUpdateConfiguration);
    Ends();
}

TEST_F(Protocol20, DoesNotExpectTheReportsOfUpdatesUnprovoked) {
    Start();
    dvr->Sends(Message("SOFTWARE_UPDATE_CONFIRM"));
    harness->Logs(2, "Unexpected SOFTWARE_UPDATE_CONFIRM");
    dvr->Sends(Message("CONFIGURATION_UPDATE_ERROR"));
    harness->Logs(2, "Unexpected CONFIGURATION_UPDATE_ERROR");
    Opens();
    Ends();
}

// What is not a message of this dialect.

class Protocol20DoesNotSupport : public Dialect20, public testing::WithParamInterface<const char*> {};

TEST_P(Protocol20DoesNotSupport, TheMessage) {
    Start();
    dvr->Sends(Message(GetParam(), " reid=\"E1\" file=\"m1\""));
    harness->Logs(1, std::string("UNSUPPORTED MSG RECEIVED: ") + GetParam());
    Opens();
    Ends();
}

INSTANTIATE_TEST_SUITE_P(Such, Protocol20DoesNotSupport,
                         testing::Values("XML", "ok", "EVENT_LISTS", "EVEN", "GET_FILE", "DONE"),
                         [](const auto& row) { return std::string(row.param); });

TEST_F(Protocol20, IgnoresAMessageWithoutAName) {
    Start();
    dvr->Sends("<msg protocolVersion=\"2.0\"/>");
    harness->Logs(1, "INVALID XML RECEIVED");
    Opens();
    Ends();
}

TEST_F(Protocol20, AbortsWithoutALogLineAtAnotherTopElement) {
    Start();
    dvr->Sends("<message req=\"OK\"/>");
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ("", harness->StandardError());
    dvr->ReceivesEnd();
}

TEST_F(Protocol20, AbortsWithoutALogLineAtACommentOfThatName) {
    Start();
    dvr->Sends("<!--msg--><msg req=\"OK\"/>");
    harness->EndsBySignal(SIGABRT);
    EXPECT_EQ("", harness->StandardError());
}

TEST_F(Protocol20, DiesOfAMalformedMessage) {
    Start();
    dvr->Sends("<msg req=\"OK\">\n  <broken>\n</msg>");
    harness->Logs(1, "error: 1:Error reading end tag.");
    harness->Logs(1, "row: 3:1");
    Dies(kHandleMessage, "not incomingMessage.Error()");
}

}  // namespace
