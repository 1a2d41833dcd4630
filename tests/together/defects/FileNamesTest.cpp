#include "tests/together/defects/DefectTest.h"

// The file's name in a message: another, none, one in the wrong case, or that of a file whose turn has not
// come.

namespace {

/// A defective name in reports of the DVR, which the harness does not read there.
struct OfFiles20 : Defect20 {
    void InReportsGoesUnnoticed(const std::vector<std::string>& place, Here here = Here::current()) {
        Start({"-t", "-x"}, place, "", here);
        ReachesFirstFile(here);
        CompletesFile("Meta.xml", 1, here);
        Logs(32, "processing 'transportException' option", here);
        Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'Event1'", here);
        Logs(32, "filesToReceive size = 1", here);
        Logs(32, "processing 'xferInProgress' option", here);
        Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'Event1'", here);
        ExportsRest(here);
        Completes("exported 1 of 1 event, 2 files, 9 bytes", here);
    }

    void OnTheFirstFile(const std::string& line, unsigned int level, Here here = Here::current()) {
        Start({}, {}, "", here);
        ReachesFirstFile(here);
        Logs(level, line, here);
        Stalls("GET_FILE", here);
        Marks({"FILE_COMPLETE"}, here);
    }
};

struct OfFiles10 : Defect10 {
    void OnTheFirstFile(const std::string& line, unsigned int level, Here here = Here::current()) {
        Start({}, {}, "", here);
        Opens(here);
        Describes("Event1", here);
        Logs(level, line, here);
        Stalls("GET_FILE", here);
        Marks({"FILE_COMPLETE"}, here);
    }
};

struct WrongFile10 : OfFiles10 {};
struct WrongFile20 : OfFiles20 {};

TEST_F(WrongFile10, OnFileComplete) {
    OnTheFirstFile("invalid file in FILE_COMPLETE: " + FileComplete10("Event1", "no-such-file"), 1);
}

TEST_F(WrongFile20, OnFileComplete) {
    OnTheFirstFile("invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "no-such-file"), 1);
}

TEST_F(WrongFile20, AtOneFile) {
    Start({}, {"--at", "Event1:Video.ts"}, "=Audio.ts");
    ReachesFirstFile();
    CompletesMetadata();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Audio.ts", true));
    Stalls("GET_FILE or EVENT_XFER_COMPLETE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(WrongFile20, OnTransportExceptionGoesUnnoticed) {
    InReportsGoesUnnoticed({"--on", "TRANSPORT_EXCEPTION"});
    Marks({"TRANSPORT_EXCEPTION"});
}

struct MissingFile10 : OfFiles10 {};
struct MissingFile20 : OfFiles20 {};

TEST_F(MissingFile10, OnFileComplete) {
    OnTheFirstFile("Got FILE_COMPLETE without both reid and file", 2);
}

TEST_F(MissingFile20, OnFileComplete) {
    OnTheFirstFile("Got FILE_COMPLETE without both reid and file", 2);
}

TEST_F(MissingFile20, OnXferInProgressGoesUnnoticed) {
    InReportsGoesUnnoticed({"--on", "XFER_IN_PROGRESS"});
    Marks({"XFER_IN_PROGRESS"});
}

struct CaseFile10 : OfFiles10 {};
struct CaseFile20 : OfFiles20 {};

TEST_F(CaseFile10, OnFileComplete) {
    OnTheFirstFile("invalid file in FILE_COMPLETE: " + FileComplete10("Event1", "mETA.XML"), 1);
}

TEST_F(CaseFile20, OnFileComplete) {
    OnTheFirstFile("invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "mETA.XML"), 1);
}

TEST_F(CaseFile20, OnInvalidEventGoesUnnoticed) {
    Start({"-f"}, {"--on", "INVALID_EVENT:2"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'invalidFile' option, cnt=0");
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
    Marks({"INVALID_EVENT"});
}

struct OtherFile10 : OfFiles10 {};
struct OtherFile20 : OfFiles20 {};

TEST_F(OtherFile10, CompletesTheNextFileFirst) {
    OnTheFirstFile("invalid file in FILE_COMPLETE: " + FileComplete10("Event1", "Video.ts"), 1);
}

TEST_F(OtherFile20, CompletesTheNextFileFirst) {
    OnTheFirstFile("invalid file in FILE_COMPLETE: " + FileComplete20("Event1", "Video.ts"), 1);
}

}  // namespace
