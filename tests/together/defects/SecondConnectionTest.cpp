#include "tests/together/defects/DefectTest.h"

// A second connection during the first, and one after it.

namespace {

constexpr const char* kOneIsReady =
    "select(g_serverFd+g_clientFd+1, &readFds, NULL, &exceptionFds, &time) == 1";
constexpr const char* kItIsTheDvr = "FD_ISSET(g_clientFd, &readFds)";

struct SecondConnection10 : Defect10 {};
struct SecondConnection20 : Defect20 {};

TEST_F(SecondConnection10, EndsTheHarness) {
    // The second connection comes after the second piece of the message, while the harness pauses after the
    // first, and nothing else comes then.
    Start({}, {"--on", "XML", "--defect", "silence", "--on", "XML", "--segment", "100", "--gap", "50"});
    Opens();
    Describes();
    harness->FailsAssertion(kMain, kItIsTheDvr);
    dvr->EndsWithStatus(1, "expected ");
    Marks({"XML"});
    Notes("opened a second connection");
}

TEST_F(SecondConnection20, EndsTheHarness) {
    Start({}, {"--on", "EVENT", "--defect", "silence", "--on", "EVENT", "--segment", "100", "--gap", "50"});
    ReachesFirstFile();
    harness->FailsAssertion(kMain, kItIsTheDvr);
    dvr->EndsWithStatus(1, "expected ");
    Marks({"EVENT"});
}

TEST_F(SecondConnection20, EndsTheHarnessWithAMessageBesideIt) {
    // FILE_COMPLETE and the second connection come while the harness pauses after XFER_IN_PROGRESS.
    Start({"-x"}, {"--on", "FILE_COMPLETE:2"});
    ReachesFirstFile();
    CompletesFile("Meta.xml", 1);
    Logs(32, "processing 'xferInProgress' option");
    Logs(16, "XFER_IN_PROGRESS 'reid' attribute = 'Event1'");
    Fails(kMain, kOneIsReady, "GET_FILE or EVENT_XFER_COMPLETE");
    Marks({"FILE_COMPLETE"});
}

struct Reconnect10 : Defect10 {};
struct Reconnect20 : Defect20 {};

TEST_F(Reconnect10, IsServedAsBefore) {
    timeout = "4";  // the harness pauses a second before it closes and accepts
    Start({});
    Opens();
    Describes();
    ExportsEvent();
    Logs(16, "Closing client socket...");
    Opens();
    Describes();
    CompletesFile("Meta.xml");
    CompletesFile("Video.ts");
    IsDone({"Event1", "Event1"});  // it forgets nothing
    ClosesAndCompletes();
    Marks({"OK"});
    Notes("connecting again, as told");
}

TEST_F(Reconnect20, IsServedAsBeforeWhenTheHarnessEndsEarly) {
    timeout = "4";
    Start({"-c", "1"});
    ReachesFirstFile();
    ExportsFiles();
    Logs(16, "Closing client socket...");
    ReachesFirstFile();
    ExportsFiles();
    Logs(16, "Closing client socket...");
    Completes();
    Marks({"OK"});
}

TEST_F(Reconnect20, EndsTheHarnessThatHasKeptTheConnection) {
    // The DVR is back while the harness pauses after the second EVENT_XFER_ACK.
    Start({}, {"--defect", "double", "--on", "EVENT_XFER_ACK"});
    ReachesFirstFile();
    ExportsFiles();
    Logs(2, "In EVENT_XFER_ACK, got unexpected reid: exp=''  act='Event1'");
    harness->FailsAssertion(kMain, kOneIsReady);
    DvrMissesTheHarness("UPDATE_SOFTWARE, UPDATE_CONFIGURATION or GET_EVENT_LIST");
    Notes("connecting again, as told");
}

}  // namespace
