#include "tests/together/defects/InReports.h"

// The event's identifier in a message: another, or none.

namespace {

struct WrongReid10 : Defect10 {};
struct WrongReid20 : InReports {};

TEST_F(WrongReid10, OnFileComplete) {
    Start({});
    Opens();
    Describes();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete10("no-such-event", "Meta.xml"));
    Stalls("GET_FILE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(WrongReid20, OnFileComplete) {
    Start({}, {"--on", "FILE_COMPLETE"});
    ReachesFirstFile();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("no-such-event", "Meta.xml"));
    Stalls("GET_FILE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(WrongReid20, OnEvent) {
    Start({});
    Opens();
    Lists();
    Describes("no-such-event");
    Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='Event1'  act='no-such-event'");
    Logs(4, "Got EVENT message with no files to receive");
    Stalls("GET_FILE");
    Marks({"EVENT"});
    EXPECT_FALSE(FileExists("/mnt/hd/incoming_Event1"));
}

TEST_F(WrongReid20, NamesTheEventOfItsValue) {
    Start({}, {}, "=Event2");
    Opens();
    Lists();
    Describes("Event2");
    Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='Event1'  act='Event2'");
    Logs(4, "Got EVENT message with no files to receive");
    Stalls("GET_FILE");
}

TEST_F(WrongReid20, OnEventXferAck) {
    Start({}, {"--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp='Event1'  act='no-such-event'");
    Stalls("NEXT_EVENT or DONE");
    Marks({"EVENT_XFER_ACK"});
}

TEST_F(WrongReid20, OnInvalidEventForAnEvent) {
    Start({"-e"});
    AsksForADamagedEvent();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'no-such-event'");
    Logs(2, std::string(kNoMatch) + "nt1'");
    ExportsTheTrueEvent();
    Marks({"INVALID_EVENT"});
}

TEST_F(WrongReid20, OnInvalidEventForAFile) {
    Start({"-f"}, {"--on", "INVALID_EVENT"});
    RequestsVideoWithFault("invalidFile");
    Logs(16, "INVALID_EVENT 'reid' attribute = 'no-such-event'");
    Logs(2, std::string(kNoMatch) + "Event1'");
    DamagesTheFileName();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'no-such-event'");
    Logs(2, std::string(kNoMatch) + "Event1'");
    RequestsTheTrueFile();
    ExportsTheRest();
    Marks({"INVALID_EVENT", "INVALID_EVENT"});
}

TEST_F(WrongReid20, OnTransportException) {
    Start({"-t"}, {"--on", "TRANSPORT_EXCEPTION"});
    RequestsVideoWithFault("transportException");
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'no-such-event'");
    Logs(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message");
    Logs(2, std::string(kNoMatch) + "Event1'");
    RequestsTheFileAgain();
    ExportsTheRest();
    Marks({"TRANSPORT_EXCEPTION"});
    EXPECT_FALSE(FileExists("/mnt/hd/velloranFail"));
}

TEST_F(WrongReid20, OnXferInProgressIsNotCompared) {
    Start({"-x"}, {"--on", "XFER_IN_PROGRESS"});
    RequestsVideoWithFault("xferInProgress");
    Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'no-such-event'");
    ExportsTheRest();
    Marks({"XFER_IN_PROGRESS"});
}

struct MissingReid10 : Defect10 {};
struct MissingReid20 : InReports {};

TEST_F(MissingReid10, OnFileComplete) {
    Start({});
    Opens();
    Describes();
    Logs(2, "Got FILE_COMPLETE without both reid and file");
    Stalls("GET_FILE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(MissingReid20, OnFileComplete) {
    Start({}, {"--on", "FILE_COMPLETE"});
    ReachesFirstFile();
    Logs(2, "Got FILE_COMPLETE without both reid and file");
    Stalls("GET_FILE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(MissingReid20, OnEvent) {
    Start({});
    Opens();
    Lists();
    Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='Event1'  act=''");
    Logs(4, "Got EVENT message with no files to receive");
    Stalls("GET_FILE");
    Marks({"EVENT"});
}

TEST_F(MissingReid20, OnEventXferAck) {
    Start({}, {"--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Logs(2, "Got EVENT_XFER_ACK with no reid attribute");
    Stalls("NEXT_EVENT or DONE");
    Marks({"EVENT_XFER_ACK"});
}

TEST_F(MissingReid20, OnInvalidEventForAnEvent) {
    Start({"-e"});
    AsksForADamagedEvent();
    Logs(2, "'reid' attribute missing from INVALID_EVENT message");
    ExportsTheTrueEvent();
    Marks({"INVALID_EVENT"});
}

TEST_F(MissingReid20, OnInvalidEventForAFile) {
    Start({"-f"}, {"--on", "INVALID_EVENT"});
    RequestsVideoWithFault("invalidFile");
    Logs(2, "'reid' attribute missing from INVALID_EVENT message");
    DamagesTheFileName();
    Logs(2, "'reid' attribute missing from INVALID_EVENT message");
    RequestsTheTrueFile();
    ExportsTheRest();
    Marks({"INVALID_EVENT", "INVALID_EVENT"});
}

TEST_F(MissingReid20, OnTransportException) {
    Start({"-t"}, {"--on", "TRANSPORT_EXCEPTION"});
    RequestsVideoWithFault("transportException");
    Logs(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message");
    RequestsTheFileAgain();
    ExportsTheRest();
    Marks({"TRANSPORT_EXCEPTION"});
    EXPECT_FALSE(FileExists("/mnt/hd/velloranFail"));
}

TEST_F(MissingReid20, OnXferInProgress) {
    Start({"-x"}, {"--on", "XFER_IN_PROGRESS"});
    RequestsVideoWithFault("xferInProgress");
    Logs(2, "'reid' attribute missing from XFER_IN_PROGRESS message");
    ExportsTheRest();
    Marks({"XFER_IN_PROGRESS"});
}

}  // namespace
