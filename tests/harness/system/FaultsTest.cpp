#include <gtest/gtest.h>

#include "tests/support/LastFile.h"

namespace {

/// Each fault of 2.0, how the DVR answers it, and that it is over then.
using Faults = FaultsOfTheLastFile;

TEST_F(Faults, RequestADamagedEventBeforeTheTrueOne) {
    Start({"-e"});
    Opens();
    Lists({"ABC123"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent("123"));
    Refuses("123");
    dvr->Receives(v2::NextEvent("ABC123"));
    Acknowledges("ABC123");
    ReceivesDone();
    Lists({"X9"});
    dvr->Receives(v2::NextEvent("X9"));
    Ends();
}

// The fault ends with its second request, so the second refusal is called unexpected.
TEST_F(Faults, DamageTheLastFilesEventAndThenItsName) {
    ReachLastFile({"-f"});
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT1", "video1"));
    Refuses("EVENT1");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=1");
    dvr->Receives(v2::GetFile("EVENT1", "eo1"));
    Refuses("EVENT1");
    harness->Logs(2, "Received unexpected INVALID_EVENT message!");
    harness->Logs(32, "filesToReceive size = 1");
    RequestsTheLastFile();
    CompletesTheLastFile();
    ExportsASecondEventWithoutAFault();
}

TEST_F(Faults, MarkTheTransportAsFailedUntilItIsReported) {
    ReachLastFile({"-t"});
    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EXPECT_TRUE(FileExists(kFailureMarker)) << "requested before the marker";
    dvr->Sends(TransportException("EVENT1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    EXPECT_FALSE(FileExists(kFailureMarker));
    RequestsTheLastFile();
    CompletesTheLastFile();
    ExportsASecondEventWithoutAFault();
    EXPECT_FALSE(FileExists(kFailureMarker));
}

TEST_F(Faults, RequestTheLastFileOnceMoreWithANewHash) {
    ReachLastFile({"-r"});
    harness->Logs(32, "processing 'rehash' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Completes("EVENT1", "video1", 1, " hashCode=\"H1\"");
    RequestsTheLastFile(true);
    dvr->Sends(FileComplete("EVENT1", "video1", " hashCode=\"H1\" length=\"1234\""));
    harness->Logs(16, "rehash resulted in same hash: 'H1'  len=1234");
    harness->Logs(64, "Got FILE_COMPLETE for: reid=EVENT1  file=video1");
    harness->Logs(32, "filesToReceive size = 0");
    ReceivesEventXferComplete("EVENT1");
    ExportsASecondEventWithoutAFault();
}

TEST_F(Faults, RequestTheLastFileTwiceInARow) {
    ReachLastFile({"-x"});
    harness->Logs(32, "processing 'xferInProgress' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Sends(XferInProgress("EVENT1"));
    harness->Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'EVENT1'");
    CompletesTheLastFile();
    ExportsASecondEventWithoutAFault();
}

}  // namespace
