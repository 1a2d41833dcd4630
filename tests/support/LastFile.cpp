#include "tests/support/LastFile.h"

void FaultsOfTheLastFile::ReachLastFile(const std::vector<std::string>& switches, const Launch& launch) {
    Start(switches, launch);
    ReachesFirstFile("EVENT1", {"meta.xml", "video1"});
    Completes("EVENT1", "meta.xml", 1, " hashCode=\"H0\"");
}

void FaultsOfTheLastFile::RequestsTheLastFile(bool rehash, Here here) {
    if (rehash) {
        harness->Logs(32, "calling SendFileRequest(EVENT1/video1, true)", here);
        dvr->Receives(v2::GetFileRehashed("EVENT1", "video1"), here);
    } else {
        harness->Logs(32, "calling SendFileRequest(EVENT1/video1, false)", here);
        dvr->Receives(v2::GetFile("EVENT1", "video1"), here);
    }
}

void FaultsOfTheLastFile::CompletesTheLastFile(Here here) {
    Completes("EVENT1", "video1", 0, "", here);
    ReceivesEventXferComplete("EVENT1", here);
}

void FaultsOfTheLastFile::ExportsASecondEventWithoutAFault(Here here) {
    Acknowledges("EVENT1", here);
    ReceivesDone(v2::kDone, here);
    Lists({"EVENT2"}, here);
    dvr->Receives(v2::NextEvent("EVENT2"), here);
    Describes("EVENT2", Description("EVENT2", {"m2", "v2"}), here);
    dvr->Receives(v2::GetFile("EVENT2", "m2"), here);
    Completes("EVENT2", "m2", 1, "", here);
    harness->Logs(32, "calling SendFileRequest(EVENT2/v2, false)", here);
    dvr->Receives(v2::GetFile("EVENT2", "v2"), here);
    Completes("EVENT2", "v2", 0, "", here);
    ReceivesEventXferComplete("EVENT2", here);
    Ends(here);
}
