#include "tests/harness/unit/driver/Driver.h"

namespace {

/// SIGINT while main is in a call that never returns. Such a call has no script and aborts the process, which
/// here raises the interrupt.
class Interrupt : public Driver {
 protected:
    static void RunUntilInterrupted() {
        signal(SIGABRT, [](int) { InterruptHandler()(SIGINT); });
        RunMain();
    }

    static Entries ShutDown(int client, int server) {
        return std::vector<Entry>{ShutdownCalled(client, SHUT_RDWR), ShutdownCalled(server, SHUT_RDWR),
                                  Logged(1, "shutting down")};
    }

    static Entries Started() {
        return std::vector<Entry>{NamedTheProcess("velloran"), SetTheLevelMask(127), SignalCalled(SIGINT)};
    }

    const TestOptions options;
};

TEST_F(Interrupt, BeforeTheSocketIsOpenEndsWithStatus44) {
    EXPECT_EXIT_STATUS(44, RunUntilInterrupted(), Started(), SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP),
                       Unscripted("socket"), ShutDown(-1, -1));
}

TEST_F(Interrupt, BeforeADvrHasConnectedShutsTheServerDown) {
    ScriptListening();
    EXPECT_EXIT_STATUS(44, RunUntilInterrupted(), Started(), SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP),
                       BindCalled(kServer, "0.0.0.0", 5001), ListenCalled(kServer, 5),
                       SelectCalled(kServer + 1, {kServer}, {kServer}, 10000, 0), Unscripted("select"),
                       ShutDown(-1, kServer));
}

TEST_F(Interrupt, BetweenMessagesShutsClientAndServerDownAndClosesNeither) {
    ScriptConnection();
    EXPECT_EXIT_STATUS(44, RunUntilInterrupted(), Started(), Connection(), FirstLoopWait(),
                       Unscripted("select"), ShutDown(kSocket, kServer));
}

TEST_F(Interrupt, InTheMiddleOfAMessageShutsClientAndServerDown) {
    ScriptConnection();
    NextSelect({1, {kSocket}});
    EXPECT_EXIT_STATUS(44, RunUntilInterrupted(), Started(), Connection(), FirstLoopWait(),
                       Handled(options, kSocket), Unscripted("HandleMessage"), ShutDown(kSocket, kServer));
}

TEST_F(Interrupt, BetweenConnectionsShutsTheOldClientsNumberDown) {
    ScriptConnection();
    ScriptMessage(1);
    EXPECT_EXIT_STATUS(44, RunUntilInterrupted(), Started(), Connection(), FirstLoopWait(),
                       Handled(options, kSocket), Slept(1), Logged(16, "Closing client socket..."),
                       CloseCalled(kSocket), AcceptCalled(kServer, 16), Unscripted("accept"),
                       ShutDown(kSocket, kServer));
}

TEST_F(Interrupt, OfALaterConnectionShutsThatOneDown) {
    ScriptConnection();
    ScriptMessage(1);
    NextAcceptReturns(75);
    EXPECT_EXIT_STATUS(
        44, RunUntilInterrupted(), Started(), Connection(), FirstLoopWait(), Handled(options, kSocket),
        Slept(1), Logged(16, "Closing client socket..."), CloseCalled(kSocket), AcceptCalled(kServer, 16),
        SelectCalled(146, {70, 75}, {70, 75}, 10000, 0), Unscripted("select"), ShutDown(75, kServer));
}

}  // namespace
