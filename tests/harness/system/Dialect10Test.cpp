#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/Dialogue.h"

namespace {

using Protocol10 = Dialect10;

TEST_F(Protocol10, LogsAWholeExportLineByLine) {
    const std::string xml =
        "<msg req=\"XML\"><xmlFile><string>&lt;recording-event reid=\"E1\"&gt;&lt;video&gt;&lt;metadata "
        "name=\"m1\"/&gt;&lt;/video&gt;&lt;/recording-event&gt;</string></xmlFile></msg>";
    harness.emplace();
    harness->Listens();
    dvr.emplace();
    dvr->Sends("<msg req=\"OK\"/>");
    dvr->Receives("<msg req=\"GET_XML\" />");
    dvr->Sends(xml);
    dvr->Receives("<msg req=\"GET_FILE\" path=\"E1\" file=\"m1\" />");
    dvr->Sends("<msg req=\"FILE_COMPLETE\" reid=\"E1\" file=\"m1\"/>");
    dvr->Receives("<msg req=\"EVENT_XFER_COMPLETE\"><events><string>E1</string></events></msg>");
    dvr->Receives("<msg req=\"DONE\" />");
    dvr->ReceivesEnd();
    harness->LogsInFull({{16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port())},
                         {1, "expecting a message of 15 bytes"},
                         {1, "read success:15"},
                         {32, "GetMessage:incoming message, bytes 1 to 15:<msg req=\"OK\"/>"},
                         {1, "got an OK, sending GET_XML"},
                         {64, "hdr[0]= 15"},
                         {1, "expecting a message of 168 bytes"},
                         {1, "read success:168"},
                         {32, "GetMessage:incoming message, bytes 1 to 168:" + xml},
                         {32, "Found event E1"},
                         {64, "hdr[0]= 2a"},
                         {1, "expecting a message of 46 bytes"},
                         {1, "read success:46"},
                         {32,
                          "GetMessage:incoming message, bytes 1 to 46:<msg req=\"FILE_COMPLETE\" reid=\"E1\" "
                          "file=\"m1\"/>"},
                         {64, "Got FILE_COMPLETE for: reid=E1  file=m1"},
                         {16, "Sending EVENT_XFER_COMPLETE"},
                         {16, "HandleMessage: event = 'E1'"},
                         {64, "hdr[0]= 49"},
                         {16, "Sending DONE"},
                         {64, "hdr[0]= 12"},
                         {16, "Closing client socket..."}});
    harness->StopsOnInterrupt();
}

TEST_F(Protocol10, IgnoresTheSwitchesOf20) {
    Connect({"-p", "1", "-c", "1", "-d", "30", "-s", "60", "-r", "-e", "-f", "-t", "-x", "-u"});
    Opens();
    dvr->Sends(Xml({Description("ABC123", {"m1", "a"}), Description("E2", {"m2"})}));
    harness->Logs(32, "Found event ABC123");
    harness->Logs(32, "Found event E2");
    dvr->Receives(v1::GetFile("ABC123", "m1"));
    Completes("ABC123", "m1");
    dvr->Receives(v1::GetFile("ABC123", "a"));
    Completes("ABC123", "a");
    dvr->Receives(v1::GetFile("E2", "m2"));
    Completes("E2", "m2");
    IsDone({"ABC123", "E2"});
    EXPECT_FALSE(FileExists(kFailureMarker));
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_ABC123"));
    harness->StopsOnInterrupt();
}

TEST_F(Protocol10, SendsABogusConfigurationOnDemand) {
    Connect({"-g"});
    dvr->Sends(Ok());
    harness->Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    dvr->Receives(v1::kUpdateConfiguration);
    dvr->Sends(Message("CONFIGURATION_UPDATE_ERROR"));
    harness->Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    Ends();
}

TEST_F(Protocol10, RepeatsAnEventWithoutReidUntilItIsInterrupted) {
    Connect();
    dvr->Sends(Xml({Description("E1", {"m1"}), "<recording-event id=\"E2\"/>", Description("E3", {"m3"})}));
    harness->Logs(32, "Found event E1");
    for (int count = 0; count < 50; ++count) {
        harness->Logs(2, "Found event with no REID");
    }
    harness->GetsSignal(SIGINT);
    harness->LogsUpTo(1, "shutting down");
    harness->EndsWithStatus(44);
    EXPECT_EQ("", harness->StandardError());
    dvr->ReceivesEnd();
}

}  // namespace
