#include <gtest/gtest.h>

#include "tests/support/LastFile.h"

namespace {

using Faults = Dialect20;

// -x: a request for the file in transfer.

TEST_F(FaultsOfTheLastFile, RequestItTwiceInARow) {
    ReachLastFile({"-x"});
    harness->Logs(32, "processing 'xferInProgress' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Sends(XferInProgress("EVENT1"));
    harness->Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'EVENT1'");
    CompletesTheLastFile();
    ExportsASecondEventWithoutAFault();
}

TEST_F(Faults, OnlyLogATransferInProgress) {
    Start();
    ReachesFirstFile("EVENT1", {"meta.xml"});
    dvr->Sends(XferInProgress("E9"));
    harness->Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'E9'");
    dvr->Sends(Message("XFER_IN_PROGRESS"));
    harness->Logs(2, "'reid' attribute missing from XFER_IN_PROGRESS message");
    Completes("EVENT1", "meta.xml", 0);
    ReceivesEventXferComplete("EVENT1");
    Ends();
}

// Where and in which order the faults act.

TEST_F(Faults, SpareAnEventWithASingleFile) {
    Start({"-f", "-t", "-r", "-x"});
    ReachesFirstFile("EVENT1", {"meta.xml"});
    Completes("EVENT1", "meta.xml", 0);
    ReceivesEventXferComplete("EVENT1");
    EXPECT_FALSE(FileExists(kFailureMarker));
    Acknowledges("EVENT1");
    ReceivesDone();
    ReachesFirstFile("EVENT2", {"m", "v"});
    Completes("EVENT2", "m", 1);
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT2", "v"));
    Ends();
}

TEST_F(Faults, SpareTheFilesAheadOfTheLast) {
    Start({"-f", "-t", "-r", "-x"});
    ReachesFirstFile("EVENT1", {"meta.xml", "video1", "video2"});
    Completes("EVENT1", "meta.xml", 2);
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Completes("EVENT1", "video1", 1);
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT1", "video2"));
    Ends();
}

TEST_F(FaultsOfTheLastFile, AllPlayOutOneAfterTheOther) {
    Start({"-e", "-f", "-t", "-r", "-x"});
    Opens();
    Lists({"EVENT1"});
    harness->Logs(32, "processing 'invalidEvent' option [event]");
    dvr->Receives(v2::NextEvent("NT1"));
    Refuses("NT1");
    dvr->Receives(v2::NextEvent("EVENT1"));
    Describes("EVENT1", Description("EVENT1", {"meta.xml", "video1"}));
    dvr->Receives(v2::GetFile("EVENT1", "meta.xml"));
    Completes("EVENT1", "meta.xml", 1);

    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT1", "video1"));
    Refuses("EVENT1");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=1");
    dvr->Receives(v2::GetFile("EVENT1", "eo1"));
    Refuses("EVENT1");
    harness->Logs(2, "Received unexpected INVALID_EVENT message!");
    harness->Logs(32, "filesToReceive size = 1");

    harness->Logs(32, "processing 'transportException' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    EXPECT_TRUE(FileExists(kFailureMarker));
    dvr->Sends(TransportException("EVENT1"));
    harness->Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    EXPECT_FALSE(FileExists(kFailureMarker));

    harness->Logs(32, "processing 'rehash' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Completes("EVENT1", "video1", 1, " hashCode=\"H1\" length=\"5\"");

    harness->Logs(32, "processing 'xferInProgress' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Sends(XferInProgress("EVENT1"));
    harness->Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'EVENT1'");
    dvr->Sends(FileComplete("EVENT1", "video1", " hashCode=\"H1\" length=\"5\""));
    harness->Logs(16, "rehash resulted in same hash: 'H1'  len=5");
    harness->Logs(64, "Got FILE_COMPLETE for: reid=EVENT1  file=video1");
    harness->Logs(32, "filesToReceive size = 0");
    ReceivesEventXferComplete("EVENT1");
    ExportsASecondEventWithoutAFault();
}

TEST_F(FaultsOfTheLastFile, StayUsedOnTheNextConnection) {
    ReachLastFile({"-x", "-c", "1"});
    harness->Logs(32, "processing 'xferInProgress' option");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    CompletesTheLastFile();
    Acknowledges("EVENT1");
    ReceivesDone();
    harness->Logs(16, "Closing client socket...");
    dvr->ReceivesEnd();
    Reconnect();
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    Completes("EVENT1", "meta.xml", 1);
    RequestsTheLastFile();
    Ends();
}

}  // namespace
