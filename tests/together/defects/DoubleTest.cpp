#include "tests/together/defects/DefectTest.h"

// A message that comes twice. The harness handles it twice.

namespace {

struct Double10 : Defect10 {};
struct Double20 : Defect20 {
    /// With the files of the event queued twice, one set after the other.
    void ExportsTheFilesTwice(Here here = Here::current()) {
        CompletesFile("Meta.xml", 3, here);
        // The second request for the front file was answered too.
        Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Meta.xml"), here);
        CompletesFile("Video.ts", 2, here);
        CompletesFile("Meta.xml", 1, here);
        RequestsVideo(false, here);
        CompletesVideo(here);
    }
};

TEST_F(Double10, OnOk) {
    Start({});
    Opens();
    Opens();
    Describes();
    Describes();
    CompletesFile("Meta.xml");
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete10("Event1", "Meta.xml"));
    CompletesFile("Video.ts");
    CompletesFile("Meta.xml");
    CompletesFile("Video.ts");
    IsDone({"Event1", "Event1"});
    ClosesAndCompletes();
    Marks({"OK", "OK"});
}

TEST_F(Double10, OnXml) {
    Start({}, {"--on", "XML"});
    Opens();
    Describes();
    Describes();
    CompletesFile("Meta.xml");
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete10("Event1", "Meta.xml"));
    CompletesFile("Video.ts");
    CompletesFile("Meta.xml");
    CompletesFile("Video.ts");
    IsDone({"Event1", "Event1"});
    ClosesAndCompletes();
    Marks({"XML", "XML"});
}

TEST_F(Double10, OnFileComplete) {
    Start({}, {"--on", "FILE_COMPLETE:1"});
    Opens();
    Describes();
    CompletesFile("Meta.xml");
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete10("Event1", "Meta.xml"));
    CompletesFile("Video.ts");
    IsDone();
    ClosesAndCompletes();
}

TEST_F(Double10, OnConfigurationUpdateError) {
    Start({"-g"}, {"--on", "CONFIGURATION_UPDATE_ERROR"});
    Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    Logs(16, "Got CONFIGURATION_UPDATE_ERROR");
    dvr->EndsWithStatus(0);
    harness->StopsOnInterrupt();
    Marks({"CONFIGURATION_UPDATE_ERROR", "CONFIGURATION_UPDATE_ERROR"});
}

TEST_F(Double20, OnOk) {
    timeout = "4";  // the harness pauses between files that are not the last
    Start({});
    Opens();
    Opens();
    Lists();
    Lists();
    Describes();
    Describes();
    ExportsTheFilesTwice();
    Logs(32, "Got EVENT_XFER_ACK for: reid='Event1'");
    Describes();
    ExportsFiles();
    Completes("exported 1 of 1 event, 4 files, 18 bytes");
    Marks({"OK", "OK"});
}

TEST_F(Double20, OnEventList) {
    timeout = "4";
    Start({}, {"--on", "EVENT_LIST"});
    Opens();
    Lists();
    Lists();
    Describes();
    Describes();
    ExportsTheFilesTwice();
    Logs(32, "Got EVENT_XFER_ACK for: reid='Event1'");
    Describes();
    ExportsFiles();
    Completes("exported 1 of 1 event, 4 files, 18 bytes");
    Marks({"EVENT_LIST", "EVENT_LIST"});
}

TEST_F(Double20, OnEvent) {
    timeout = "4";
    Start({}, {"--on", "EVENT"});
    Opens();
    Lists();
    Describes();
    Describes();
    ExportsTheFilesTwice();
    Acknowledges();
    Completes();
    Marks({"EVENT", "EVENT"});
}

TEST_F(Double20, OnFileComplete) {
    Start({}, {"--on", "FILE_COMPLETE:1"});
    ReachesFirstFile();
    CompletesMetadata();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Meta.xml"));
    ExportsRest();
    Completes();
    Marks({"FILE_COMPLETE", "FILE_COMPLETE"});
}

TEST_F(Double20, OnTheLastFileComplete) {
    Start({}, {"--on", "FILE_COMPLETE:2"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Video.ts", true));
    Acknowledges();
    Completes();
}

TEST_F(Double20, OnEventXferAck) {
    Start({}, {"--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Acknowledges();
    Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp=''  act='Event1'");
    Completes();
    Marks({"EVENT_XFER_ACK", "EVENT_XFER_ACK"});
}

TEST_F(Double20, OnInvalidEvent) {
    Start({"-e"}, {"--on", "INVALID_EVENT"});
    Opens();
    Lists();
    Logs(32, "processing 'invalidEvent' option [event]");
    Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
    // The second one drops the true event, which the DVR then describes in vain.
    Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
    Logs(2, "'reid' attribute does not match expected: 'Event1'");
    Describes();
    Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp=''  act='Event1'");
    Logs(4, "Got EVENT message with no files to receive");
    Stalls("GET_FILE");
    Marks({"INVALID_EVENT", "INVALID_EVENT"});
}

TEST_F(Double20, OnTransportException) {
    Start({"-t"}, {"--on", "TRANSPORT_EXCEPTION"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'transportException' option");
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'Event1'");
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    // The second one counts as the end of the true request.
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'Event1'");
    Logs(32, "filesToReceive size = 0");
    Logs(16, "Sending EVENT_XFER_COMPLETE");
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Video.ts", true));
    Acknowledges();
    Completes();
    Marks({"TRANSPORT_EXCEPTION", "TRANSPORT_EXCEPTION"});
}

TEST_F(Double20, OnSoftwareUpdateConfirm) {
    Start({"-u"}, {"--on", "SOFTWARE_UPDATE_CONFIRM"});
    Logs(1, "got an OK, sending UPDATE_SOFTWARE");
    Opens();
    Logs(16, "Got SOFTWARE_UPDATE_CONFIRM");
    Logs(16, "Got SOFTWARE_UPDATE_CONFIRM");
    Lists();
    Describes();
    ExportsFiles();
    Completes();
    Marks({"SOFTWARE_UPDATE_CONFIRM", "SOFTWARE_UPDATE_CONFIRM"});
}

}  // namespace
