#include "tests/together/defects/DefectTest.h"

// The list of events.

namespace {

struct MissingSource20 : Defect20 {};

TEST_F(MissingSource20, IsReported) {
    Start({});
    Opens();
    Logs(2, "'source' attribute missing from EVENT_LIST message");
    Describes();
    ExportsFiles();
    Completes();
    Marks({"EVENT_LIST"});
}

struct EmptyList20 : Defect20 {};

TEST_F(EmptyList20, LeavesNothingToAskFor) {
    Start({});
    Opens();
    Lists();
    Logs(2, "could not find 'event' tag in EVENT_LIST message");
    Logs(4, "Got EVENT_LIST message with no events");
    Stalls("NEXT_EVENT");
    Marks({"EVENT_LIST"});
}

TEST_F(EmptyList20, LeavesNothingToDamage) {
    Start({"-e"});
    Opens();
    Lists();
    Logs(2, "could not find 'event' tag in EVENT_LIST message");
    Logs(4, "Got EVENT_LIST message with no events");
    Stalls("NEXT_EVENT");
}

struct DoubleList10 : Defect10 {};
struct DoubleList20 : Defect20 {};

TEST_F(DoubleList10, ExportsEachEventTwice) {
    Start({});
    Opens();
    Describes();
    Describes();
    for (int time = 0; time < 2; ++time) {
        CompletesFile("Meta.xml");
        CompletesFile("Video.ts");
    }
    IsDone({"Event1", "Event1"});
    ClosesAndCompletes();
    Marks({"XML"});
}

TEST_F(DoubleList20, ExportsEachEventTwice) {
    Start({});
    ReachesFirstFile();
    CompletesMetadata();
    CompletesVideo();
    Logs(32, "Got EVENT_XFER_ACK for: reid='Event1'");
    Describes();
    ExportsFiles();
    Completes("exported 1 of 1 event, 4 files, 18 bytes");
    Marks({"EVENT_LIST"});
}

TEST_F(DoubleList20, EndsEarlyBehindTheFirst) {
    Start({"-c", "1"});
    ReachesFirstFile();
    ExportsFiles();
    Logs(16, "Closing client socket...");
    Completes();
}

struct EventWithoutText20 : Defect20 {};

TEST_F(EventWithoutText20, IsSkipped) {
    Start({});
    Opens();
    Lists();
    Logs(2, "'event' found with no text");
    Describes();
    ExportsFiles();
    Completes();
    Marks({"EVENT_LIST"});
}

}  // namespace
