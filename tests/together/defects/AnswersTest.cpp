#include "tests/together/defects/DefectTest.h"

// Answers that are wrong, missing, or come twice.

namespace {

struct AcceptEvent20 : Defect20 {};

TEST_F(AcceptEvent20, DescribesTheDamagedEvent) {
    Start({"-e"});
    Opens();
    Lists();
    Logs(32, "processing 'invalidEvent' option [event]");
    Describes("nt1");
    for (const int left : {1, 0}) {  // and then it refuses the files that it has described
        Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
        Logs(2, "Received unexpected INVALID_EVENT message!");
        Logs(32, "filesToReceive size = " + std::to_string(left));
        Logs(left == 1 ? 32 : 16,
             left == 1 ? "calling SendFileRequest(nt1/nt1_1, false)" : "Sending EVENT_XFER_COMPLETE");
    }
    Logs(32, "Got EVENT_XFER_ACK for: reid='nt1'");
    Describes();
    ExportsFiles();
    dvr->EndsWithStatus(0);
    harness->StopsOnInterrupt();
    Marks({"EVENT"});
    EXPECT_TRUE(FileExists("/mnt/hd/incoming_nt1"));
}

struct AcceptFile20 : Defect20 {};

TEST_F(AcceptFile20, CompletesTheDamagedFile) {
    Start({"-f"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'invalidFile' option, cnt=0");
    Logs(64, "Got FILE_COMPLETE for: reid=nt1  file=Video.ts");
    Logs(32, "filesToReceive size = 1");
    Logs(32, "processing 'invalidFile' option, cnt=0");  // once more
    Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
    Logs(2, "'reid' attribute does not match expected: 'Event1'");
    Logs(32, "filesToReceive size = 1");
    Logs(32, "processing 'invalidFile' option, cnt=1");
    Logs(16, "INVALID_EVENT 'reid' attribute = 'Event1'");
    Logs(2, "Received unexpected INVALID_EVENT message!");
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    ExportsRest();
    Completes();
    Marks({"FILE_COMPLETE"});
}

TEST_F(AcceptFile20, CompletesTheFileWithADamagedName) {
    Start({"-f"}, {"--on", "INVALID_EVENT:2"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'invalidFile' option, cnt=0");
    Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
    Logs(2, "'reid' attribute does not match expected: 'Event1'");
    Logs(32, "filesToReceive size = 1");
    Logs(32, "processing 'invalidFile' option, cnt=1");
    CompletesFile("eo.ts", 1);
    RequestsVideo();
    ExportsRest();
    Completes();
    Marks({"FILE_COMPLETE"});
}

struct NoException20 : Defect20 {};

TEST_F(NoException20, LetsTheFaultBeInjectedOnceMore) {
    Start({"-t"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'transportException' option");
    CompletesFile("Video.ts", 1);
    Logs(32, "processing 'transportException' option");
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'Event1'");
    Logs(32, "filesToReceive size = 1");
    RequestsVideo();
    ExportsRest();
    Completes();
    Marks({"FILE_COMPLETE"});
    EXPECT_FALSE(FileExists("/mnt/hd/velloranFail"));
}

struct NoAnswer10 : Defect10 {};
struct NoAnswer20 : Defect20 {};

TEST_F(NoAnswer10, ToNobodyAtTheStart) {
    Start({});
    Stalls("GET_XML or UPDATE_CONFIGURATION");
    Notes("not sent: OK");
}

TEST_F(NoAnswer10, ToGetXml) {
    Start({}, {"--on", "XML"});
    Opens();
    Stalls("GET_FILE");
    Notes("not sent: XML (xmlFile: 1)");
}

TEST_F(NoAnswer10, ToGetFile) {
    Start({}, {"--on", "FILE_COMPLETE:2"});
    Opens();
    Describes();
    CompletesFile("Meta.xml");
    Stalls("EVENT_XFER_COMPLETE");
}

TEST_F(NoAnswer10, ToAConfigurationUpdate) {
    Start({"-g"}, {"--on", "CONFIGURATION_UPDATE_ERROR"});
    Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    dvr->EndsWithStatus(0);
    harness->StopsOnInterrupt();
    Notes("not sent: CONFIGURATION_UPDATE_ERROR");
}

TEST_F(NoAnswer20, ToNobodyAtTheStart) {
    Start({});
    Stalls("UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST");
    Notes("not sent: OK");
}

TEST_F(NoAnswer20, ToGetEventList) {
    Start({}, {"--on", "EVENT_LIST"});
    Opens();
    Stalls("NEXT_EVENT");
}

TEST_F(NoAnswer20, ToNextEvent) {
    Start({}, {"--on", "EVENT"});
    Opens();
    Lists();
    Stalls("GET_FILE");
}

TEST_F(NoAnswer20, ToADamagedNextEvent) {
    Start({"-e"}, {"--on", "INVALID_EVENT"});
    Opens();
    Lists();
    Logs(32, "processing 'invalidEvent' option [event]");
    Stalls("NEXT_EVENT");
}

TEST_F(NoAnswer20, ToGetFile) {
    Start({}, {"--on", "FILE_COMPLETE:1"});
    ReachesFirstFile();
    Stalls("GET_FILE");
}

TEST_F(NoAnswer20, ToADamagedGetFile) {
    Start({"-f"}, {"--on", "INVALID_EVENT:2"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'invalidFile' option, cnt=0");
    Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
    Logs(2, "'reid' attribute does not match expected: 'Event1'");
    Logs(32, "filesToReceive size = 1");
    Logs(32, "processing 'invalidFile' option, cnt=1");
    Stalls("GET_FILE");
}

TEST_F(NoAnswer20, ToAFailingTransfer) {
    Start({"-t"}, {"--on", "TRANSPORT_EXCEPTION"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'transportException' option");
    Stalls("GET_FILE");
    EXPECT_TRUE(FileExists("/mnt/hd/velloranFail"));
}

TEST_F(NoAnswer20, ToEventXferComplete) {
    Start({}, {"--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Stalls("NEXT_EVENT or DONE");
}

TEST_F(NoAnswer20, ToASoftwareUpdate) {
    Start({"-u"}, {"--on", "SOFTWARE_UPDATE_CONFIRM"});
    Logs(1, "got an OK, sending UPDATE_SOFTWARE");
    ReachesFirstFile();
    ExportsFiles();
    Completes();
    Notes("not sent: SOFTWARE_UPDATE_CONFIRM");
}

TEST_F(NoAnswer20, ToAConfigurationUpdate) {
    Start({"-g"}, {"--on", "CONFIGURATION_UPDATE_ERROR"});
    Logs(1, "got an OK, sending CONFIGURATION_UPDATE");
    dvr->EndsWithStatus(0);
    harness->StopsOnInterrupt();
    Notes("not sent: CONFIGURATION_UPDATE_ERROR");
}

struct NoXferInProgress20 : Defect20 {};

TEST_F(NoXferInProgress20, GoesUnreported) {
    Start({"-x"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'xferInProgress' option");
    ExportsRest();
    Completes();
    Notes("not sent: XFER_IN_PROGRESS reid=\"Event1\" file=\"Video.ts\"");
}

struct DoubleXferInProgress20 : Defect20 {};

TEST_F(DoubleXferInProgress20, IsLoggedTwice) {
    Start({"-x"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'xferInProgress' option");
    Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'Event1'");
    Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'Event1'");
    ExportsRest();
    Completes();
    Marks({"XFER_IN_PROGRESS", "XFER_IN_PROGRESS"});
}

struct Silence10 : Defect10 {};
struct Silence20 : Defect20 {};

TEST_F(Silence10, BehindOk) {
    Start({});
    Opens();
    Stalls("GET_FILE");
    Marks({"OK"});
}

TEST_F(Silence20, BehindTheEventList) {
    Start({}, {"--on", "EVENT_LIST"});
    Opens();
    Lists();
    Stalls("GET_FILE");
    Marks({"EVENT_LIST"});
}

}  // namespace
