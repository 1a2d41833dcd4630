#include <gtest/gtest.h>

#include "tests/support/LastFile.h"

namespace {

using Faults = Dialect20;

// -f: a damaged file. The fault ends with its second request, so the second refusal is called unexpected.

TEST_F(FaultsOfTheLastFile, DamageItsEventAndThenItsName) {
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

TEST_F(FaultsOfTheLastFile, ExpectTheEventAndNotTheDamagedOneToBeRefused) {
    ReachLastFile({"-f"});
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT1", "video1"));
    dvr->Sends(InvalidEvent("NT1"));
    harness->Logs(16, "INVALID_EVENT 'reid' attribute = 'NT1'");
    harness->Logs(2, "'reid' attribute does not match expected: 'EVENT1'");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=1");
    dvr->Receives(v2::GetFile("EVENT1", "eo1"));
    Ends();
}

TEST_F(Faults, EmptyAShortEventAndAShortName) {
    Start({"-f"});
    ReachesFirstFile("E1", {"m", "v"});
    Completes("E1", "m", 1);
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("", "v"));
    Refuses("E1");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=1");
    dvr->Receives(v2::GetFile("E1", ""));
    Refuses("E1");
    harness->Logs(2, "Received unexpected INVALID_EVENT message!");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "calling SendFileRequest(E1/v, false)");
    dvr->Receives(v2::GetFile("E1", "v"));
    Ends();
}

TEST_F(FaultsOfTheLastFile, DamageItsEventAgainWhenTheDamagedRequestIsServed) {
    ReachLastFile({"-f"});
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT1", "video1"));
    dvr->Sends(FileComplete("NT1", "video1"));
    harness->Logs(64, "Got FILE_COMPLETE for: reid=NT1  file=video1");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=0");
    dvr->Receives(v2::GetFile("NT1", "video1"));
    Ends();
}

TEST_F(Faults, DamageOnlyTheNameAfterOneEarlierRefusal) {
    Start({"-f"});
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    Refuses("EVENT1");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=1");
    dvr->Receives(v2::GetFile("EVENT1", "eo1"));
    Ends();
}

TEST_F(Faults, SendNothingForTheLastFileAfterTwoEarlierRefusals) {
    Start({"-f"});
    ReachesFirstFile("EVENT1", {"meta.xml", "video1", "video2"});
    Refuses("EVENT1");
    harness->Logs(32, "filesToReceive size = 2");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Refuses("EVENT1");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "processing 'invalidFile' option, cnt=2");
    Opens();
    Ends();
}

// INVALID_EVENT about a file.

TEST_F(Faults, DropAFileRefusedUnprovoked) {
    Start();
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    Refuses("EVENT1");
    harness->Logs(2, "Received unexpected INVALID_EVENT message!");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "calling SendFileRequest(EVENT1/video1, false)");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Ends();
}

TEST_F(Faults, DropAFileRefusedWithoutReid) {
    Start();
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    dvr->Sends(Message("INVALID_EVENT"));
    harness->Logs(2, "'reid' attribute missing from INVALID_EVENT message");
    harness->Logs(2, "Received unexpected INVALID_EVENT message!");
    harness->Logs(32, "filesToReceive size = 1");
    harness->Logs(32, "calling SendFileRequest(EVENT1/video1, false)");
    dvr->Receives(v2::GetFile("EVENT1", "video1"));
    Ends();
}

TEST_F(Faults, CompleteTheEventWhenItsLastFileIsRefused) {
    Start();
    ReachesFirstFile("EVENT1", {"meta.xml"});
    dvr->Sends(InvalidEvent("E9"));
    harness->Logs(16, "INVALID_EVENT 'reid' attribute = 'E9'");
    harness->Logs(2, "'reid' attribute does not match expected: 'EVENT1'");
    harness->Logs(2, "Received unexpected INVALID_EVENT message!");
    harness->Logs(32, "filesToReceive size = 0");
    ReceivesEventXferComplete("EVENT1");
    Ends();
}

}  // namespace
