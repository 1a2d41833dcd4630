#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

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

TEST_F(Protocol20, SavesEachDescriptionAndReport) {
    Start();
    for (const std::string id : {"E1", "X"}) {
        ReachesFirstFile(id, {"m"});
        EXPECT_EQ("<recording-event reid=\"" + id +
                      "\">\n"
                      "    <video>\n"
                      "        <metadata name=\"m\" />\n"
                      "        <streams>\n"
                      "            <stream />\n"
                      "        </streams>\n"
                      "    </video>\n"
                      "</recording-event>\n",
                  ReadFile("/mnt/hd/incoming_" + id));
        Completes(id, "m", 0);
        ReceivesEventXferComplete(id);
        EXPECT_EQ(v2::EventXferComplete(id) + "\n", ReadFile("/mnt/hd/outgoingETCstring"));
        Acknowledges(id);
        ReceivesDone();
    }
    Ends();
}

TEST_F(Protocol20, AnnouncesADurationOnDemandAndKeepsTheConnectionAfterDone) {
    Start({"-d", "30"});
    Lists({"E1"});
    dvr->Receives(v2::NextEvent("E1"));
    Acknowledges("E1");
    ReceivesDone("<msg req=\"DONE\" protocolVersion=\"2.0\" duration=\"30\" />");
    Opens();
    Ends();
}

TEST_F(Protocol20, EndsEarlyOnDemandAndLeavesTheOtherEventsToTheNextConnection) {
    Start({"-c", "1"});
    Lists({"E1", "E2"});
    dvr->Receives(v2::NextEvent("E1"));
    const Clock::time_point start = Clock::now();
    Acknowledges("E1");
    ReceivesDone();
    Closes();
    EXPECT_GE(Clock::now() - start, milliseconds(250 + 1000));
    Reconnect();
    Lists({"E3"});
    dvr->Receives(v2::NextEvent("E2"));
    Ends();
}

TEST_F(Protocol20, PausesAsLongAsToldAfterEachRequestButTheLast) {
    Start({"-s", "4"});
    ReachesFirstFile("E1", {"m1", "a", "b"});
    const Clock::time_point start = Clock::now();
    Completes("E1", "m1", 2);
    dvr->Receives(v2::GetFile("E1", "a"));
    EXPECT_LT(Clock::now() - start, milliseconds(250) + seconds(3)) << "the request came after the pause";
    Completes("E1", "a", 1);
    EXPECT_GE(Clock::now() - start, milliseconds(250 + 4000 + 250));
    harness->Logs(32, "calling SendFileRequest(E1/b, false)");
    dvr->Receives(v2::GetFile("E1", "b"));
    Completes("E1", "b", 0);
    ReceivesEventXferComplete("E1");
    EXPECT_LT(Clock::now() - start, milliseconds(250 + 4000 + 250 + 250) + seconds(3));
    Ends();
}

TEST_F(Protocol20, OrdersAnUpgradeBeforeTheExportOnDemand) {
    Start({"-u"});
    dvr->Sends(Ok());
    harness->Logs(1, "got an OK, sending UPDATE_SOFTWARE");
    dvr->Receives(v2::kUpdateSoftware);
    harness->Logs(1, "got an OK, sending GET_EVENT_LIST");
    dvr->Receives(v2::kGetEventList);
    dvr->Sends(Message("SOFTWARE_UPDATE_CONFIRM"));
    harness->Logs(16, "Got SOFTWARE_UPDATE_CONFIRM");
    Ends();
}

TEST_F(Protocol20, SendsABogusConfigurationOnDemand) {
    Start({"-g"});
    dvr->Sends(Ok());
    harness->Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    dvr->Receives(v2::kUpdateConfiguration);
    dvr->Sends(Message("CONFIGURATION_UPDATE_ERROR"));
    harness->Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    Ends();
}

}  // namespace
