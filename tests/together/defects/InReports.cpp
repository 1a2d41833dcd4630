#include "tests/together/defects/InReports.h"

void InReports::AsksForADamagedEvent(Here here) {
    Opens(here);
    Lists(here);
    Logs(32, "processing 'invalidEvent' option [event]", here);
}

void InReports::ExportsTheTrueEvent(Here here) {
    Describes("Event1", here);
    ExportsFiles(here);
    Completes("exported 1 of 1 event, 2 files, 9 bytes", here);
}

void InReports::RequestsVideoWithFault(const std::string& fault, Here here) {
    ReachesFirstFile(here);
    CompletesFile("Meta.xml", 1, here);
    Logs(32, "processing '" + fault + "' option" + (fault == "invalidFile" ? ", cnt=0" : ""), here);
}

void InReports::DamagesTheFileName(Here here) {
    Logs(32, "filesToReceive size = 1", here);
    Logs(32, "processing 'invalidFile' option, cnt=1", here);
}

void InReports::RequestsTheTrueFile(Here here) {
    Logs(2, "Received unexpected INVALID_EVENT message!", here);
    RequestsTheFileAgain(here);
}

void InReports::RequestsTheFileAgain(Here here) {
    Logs(32, "filesToReceive size = 1", here);
    RequestsVideo(false, here);
}

void InReports::ExportsTheRest(Here here) {
    ExportsRest(here);
    Completes("exported 1 of 1 event, 2 files, 9 bytes", here);
}
