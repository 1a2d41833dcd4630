#include "tests/together/defects/DefectTest.h"

// Messages that nobody asked for, or that the dialect does not know.

namespace {

constexpr const char* kUnexpected = "Received unexpected INVALID_EVENT message!";

struct UnaskedInvalidEvent20 : Defect20 {};

TEST_F(UnaskedInvalidEvent20, DropsAFile) {
    Start({}, {"--on", "FILE_COMPLETE:1"});
    ReachesFirstFile();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'Event1'");
    Logs(2, kUnexpected);
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Meta.xml"));
    ExportsRest();
    Completes();
    Marks({"INVALID_EVENT", "FILE_COMPLETE"});
}

TEST_F(UnaskedInvalidEvent20, DropsTheLastFile) {
    Start({}, {"--on", "FILE_COMPLETE:2"});
    ReachesFirstFile();
    CompletesMetadata();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'Event1'");
    Logs(2, kUnexpected);
    Logs(32, "filesToReceive size = 0");
    Logs(16, "Sending EVENT_XFER_COMPLETE");
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Video.ts", true));
    Acknowledges();
    Completes();
}

TEST_F(UnaskedInvalidEvent20, DropsTheEvent) {
    Start({});
    Opens();
    Lists();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'Event1'");
    Describes();
    Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp=''  act='Event1'");
    Logs(4, "Got EVENT message with no files to receive");
    Stalls("GET_FILE");
    Marks({"INVALID_EVENT", "EVENT"});
}

TEST_F(UnaskedInvalidEvent20, LeavesTheFileFaultWithoutARequest) {
    // Already counted once, and once more for the first damaged request: the second is never sent.
    Start({"-f"}, {"--on", "FILE_COMPLETE:1"});
    ReachesFirstFile();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'Event1'");
    Logs(32, "filesToReceive size = 1");
    Logs(32, "processing 'invalidFile' option, cnt=1");
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Meta.xml"));
    Logs(16, "INVALID_EVENT 'reid' attribute = 'Event1'");
    Logs(2, kUnexpected);
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    ExportsRest();
    Completes();
}

struct UnaskedTransportException20 : Defect20 {};

TEST_F(UnaskedTransportException20, DropsAFile) {
    Start({});
    ReachesFirstFile();
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'Event1'");
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Meta.xml"));
    ExportsRest();
    Completes();
    Marks({"TRANSPORT_EXCEPTION", "FILE_COMPLETE"});
    // The harness removes the marker file whether or not it exists.
    EXPECT_NE(std::string::npos, harness->StandardError().find("/mnt/hd/velloranFail"));
}

TEST_F(UnaskedTransportException20, SpendsTheFaultBeforeItIsInjected) {
    Start({"-t"}, {"--on", "FILE_COMPLETE:1"});
    ReachesFirstFile();
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'Event1'");
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Meta.xml"));
    ExportsRest();
    Completes();
}

struct UnaskedSoftwareUpdateConfirm20 : Defect20 {};

TEST_F(UnaskedSoftwareUpdateConfirm20, IsUnexpected) {
    Start({});
    Logs(2, "Unexpected SOFTWARE_UPDATE_CONFIRM");
    ReachesFirstFile();
    ExportsFiles();
    Completes();
    Marks({"SOFTWARE_UPDATE_CONFIRM", "OK"});
}

TEST_F(UnaskedSoftwareUpdateConfirm20, IsTakenWhenAnUpdateIsAskedFor) {
    Start({"-u"});
    Logs(16, "Got SOFTWARE_UPDATE_CONFIRM");
    Logs(1, "got an OK, sending UPDATE_SOFTWARE");
    Opens();
    Logs(16, "Got SOFTWARE_UPDATE_CONFIRM");
    Lists();
    Describes();
    ExportsFiles();
    Completes();
}

struct UnaskedConfigurationUpdateError10 : Defect10 {};
struct UnaskedConfigurationUpdateError20 : Defect20 {};

TEST_F(UnaskedConfigurationUpdateError10, IsUnexpected) {
    Start({});
    Logs(2, "Unexpected CONFIGURATION_UPDATE_ERROR");
    Opens();
    Describes();
    ExportsEvent();
    ClosesAndCompletes();
    Marks({"CONFIGURATION_UPDATE_ERROR", "OK"});
}

TEST_F(UnaskedConfigurationUpdateError10, IsTakenWhenAnUpdateIsAskedFor) {
    Start({"-g"});
    Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    dvr->EndsWithStatus(0);
    harness->StopsOnInterrupt();
}

TEST_F(UnaskedConfigurationUpdateError20, IsUnexpected) {
    Start({}, {"--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Logs(2, "Unexpected CONFIGURATION_UPDATE_ERROR");
    Acknowledges();
    Completes();
    Marks({"CONFIGURATION_UPDATE_ERROR", "EVENT_XFER_ACK"});
}

struct UnknownMessage10 : Defect10 {};
struct UnknownMessage20 : Defect20 {};

TEST_F(UnknownMessage10, IsIgnored) {
    Start({});
    Logs(1, "UNSUPPORTED MSG RECEIVED: HELLO");
    Opens();
    Describes();
    ExportsEvent();
    ClosesAndCompletes();
    Marks({"HELLO", "OK"});
}

TEST_F(UnknownMessage10, MayBeOneOfTheOtherDialect) {
    Start({}, {"--on", "XML"}, "=SOFTWARE_UPDATE_CONFIRM");
    Opens();
    Logs(1, "UNSUPPORTED MSG RECEIVED: SOFTWARE_UPDATE_CONFIRM");
    Describes();
    ExportsEvent();
    ClosesAndCompletes();
}

TEST_F(UnknownMessage20, IsIgnored) {
    Start({}, {"--on", "EVENT"}, "=EVENT_LISTS");
    Opens();
    Lists();
    Logs(1, "UNSUPPORTED MSG RECEIVED: EVENT_LISTS");
    Describes();
    ExportsFiles();
    Completes();
    Marks({"EVENT_LISTS", "EVENT"});
}

struct CaseReq10 : Defect10 {};
struct CaseReq20 : Defect20 {};

TEST_F(CaseReq10, IsUnknown) {
    Start({});
    Logs(1, "UNSUPPORTED MSG RECEIVED: ok");
    Stalls("GET_XML or UPDATE_CONFIGURATION");
    Marks({"ok"});
}

TEST_F(CaseReq20, IsUnknown) {
    Start({}, {"--on", "EVENT_LIST"});
    Opens();
    Logs(1, "UNSUPPORTED MSG RECEIVED: event_list");
    Stalls("NEXT_EVENT");
    Marks({"event_list"});
}

}  // namespace
