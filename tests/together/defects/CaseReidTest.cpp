#include "tests/together/defects/InReports.h"

// The event's identifier in a message, with upper and lower case swapped.

namespace {

struct CaseReid10 : Defect10 {};
struct CaseReid20 : InReports {};

TEST_F(CaseReid10, OnFileComplete) {
    Start({});
    Opens();
    Describes();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete10("eVENT1", "Meta.xml"));
    Stalls("GET_FILE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(CaseReid20, OnFileComplete) {
    Start({}, {"--on", "FILE_COMPLETE"});
    ReachesFirstFile();
    Logs(1, "invalid file in FILE_COMPLETE: " + FileComplete20("eVENT1", "Meta.xml"));
    Stalls("GET_FILE");
    Marks({"FILE_COMPLETE"});
}

TEST_F(CaseReid20, OnEvent) {
    Start({});
    Opens();
    Lists();
    Describes("eVENT1");
    Logs(2, "Handle_EVENT_msg: 'reid' attribute incorrect: exp='Event1'  act='eVENT1'");
    Logs(4, "Got EVENT message with no files to receive");
    Stalls("GET_FILE");
    Marks({"EVENT"});
}

TEST_F(CaseReid20, OnEventXferAck) {
    Start({}, {"--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp='Event1'  act='eVENT1'");
    Stalls("NEXT_EVENT or DONE");
    Marks({"EVENT_XFER_ACK"});
}

TEST_F(CaseReid20, OnInvalidEventForAnEvent) {
    Start({"-e"});
    AsksForADamagedEvent();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'NT1'");
    Logs(2, std::string(kNoMatch) + "nt1'");
    ExportsTheTrueEvent();
    Marks({"INVALID_EVENT"});
}

TEST_F(CaseReid20, OnInvalidEventForAFile) {
    // The first one names a damaged event anyway, the second would have named the true one.
    Start({"-f"}, {"--on", "INVALID_EVENT:2"});
    RequestsVideoWithFault("invalidFile");
    Logs(16, "INVALID_EVENT 'reid' attribute = 'nt1'");
    Logs(2, std::string(kNoMatch) + "Event1'");
    DamagesTheFileName();
    Logs(16, "INVALID_EVENT 'reid' attribute = 'eVENT1'");
    Logs(2, std::string(kNoMatch) + "Event1'");
    RequestsTheTrueFile();
    ExportsTheRest();
    Marks({"INVALID_EVENT"});
}

TEST_F(CaseReid20, OnTransportException) {
    Start({"-t"}, {"--on", "TRANSPORT_EXCEPTION"});
    RequestsVideoWithFault("transportException");
    Logs(16, "TRANSPORT_EXCEPTION 'reid' attribute = 'eVENT1'");
    Logs(2, "'reid' attribute missing from TRANSPORT_EXCEPTION message");
    Logs(2, std::string(kNoMatch) + "Event1'");
    RequestsTheFileAgain();
    ExportsTheRest();
    Marks({"TRANSPORT_EXCEPTION"});
}

TEST_F(CaseReid20, OnXferInProgressIsNotCompared) {
    Start({"-x"}, {"--on", "XFER_IN_PROGRESS"});
    RequestsVideoWithFault("xferInProgress");
    Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'eVENT1'");
    ExportsTheRest();
    Marks({"XFER_IN_PROGRESS"});
}

}  // namespace
