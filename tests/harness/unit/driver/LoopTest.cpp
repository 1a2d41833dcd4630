#include <cerrno>

#include "tests/harness/unit/driver/Driver.h"

namespace {

const char* const kLoopSelect = "select(g_serverFd+g_clientFd+1, &readFds, NULL, &exceptionFds, &time) == 1";

/// Everything up to the wait for the first message.
Entries Connected() {
    std::vector<Entry> entries;
    for (const Entries& step : {LoggerSetUp(), Entries(SignalCalled(SIGINT)), Connection()}) {
        entries.insert(entries.end(), step.begin(), step.end());
    }
    return entries;
}

class Loop : public Driver {
 protected:
    Loop() { ScriptConnection(); }

    const TestOptions options;
};

TEST_F(Loop, WaitsForTheClientAndTheServerWithTheSumOfBothDescriptorsPlusOne) {
    ScriptMessage(0);
    ScriptMessage(0);
    EXPECT_ABORT(RunMain(), Connected(), SelectCalled(142, {70, 71}, {71}, 10000, 0),
                 Handled(options, kSocket, 1), SelectCalled(142, {70, 71}, {70, 71}, 10000, 0),
                 Handled(options, kSocket, 2), SelectCalled(142, {70, 71}, {70, 71}, 10000, 0),
                 Unscripted("select"));
}

TEST_F(Loop, TakesTheSumAlsoOfOtherDescriptors) {
    ResetListener();
    ScriptListening(300);
    NextSelect({1, {300}});
    NextAcceptReturns(kSocket);
    EXPECT_ABORT(RunMain(), LoggerSetUp(), SignalCalled(SIGINT),
                 SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP), BindCalled(300, "0.0.0.0", 5001),
                 ListenCalled(300, 5), SelectCalled(301, {300}, {300}, 10000, 0), AcceptCalled(300, 110),
                 Logged(16, "Connected to: fam=2  10.0.0.5:50000"),
                 SelectCalled(372, {71, 300}, {71}, 10000, 0), Unscripted("select"));
}

TEST_F(Loop, StartsWithTheSetsAsTheFirstWaitLeftThem) {
    ResetListener();
    ScriptListening();
    NextSelect({1, {kServer}, {kServer, 80}});
    NextAcceptReturns(kSocket);
    EXPECT_ABORT(RunMain(), Connected(), SelectCalled(142, {70, 71}, {70, 71, 80}, 10000, 0),
                 Unscripted("select"));
}

TEST_F(Loop, ClearsTheSetsAfterEachMessage) {
    NextSelect({1, {kSocket, 80}, {80}});
    NextHandleMessageReturns(0);
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket),
                 SelectCalled(142, {70, 71}, {70, 71}, 10000, 0), Unscripted("select"));
}

TEST_F(Loop, SpendsOneTimeBudgetOnAllWaits) {
    ResetListener();
    ScriptListening();
    NextSelect({1, {kServer}, {}, 9000});
    NextAcceptReturns(kSocket);
    NextSelect({1, {kSocket}, {}, 800});
    NextHandleMessageReturns(0);
    NextSelect({1, {kSocket}, {}, 70});
    NextHandleMessageReturns(1);
    NextAcceptReturns(kSocket);
    NextSelect({0, {}, {}, 0});
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(9000), Handled(options, kSocket, 1), LoopWait(800),
                 Handled(options, kSocket, 2), Slept(1), Logged(16, "Closing client socket..."),
                 CloseCalled(kSocket), AcceptCalled(kServer, 16), LoopWait(70),
                 AssertionFailed(kMain, kLoopSelect));
}

TEST_F(Loop, FailsAnAssertionWhenAWaitFindsAnythingButOneDescriptor) {
    for (const int result : {0, -1, 2}) {
        ScriptConnection();
        NextSelect({result, {kSocket, kServer}, {}, 0, EINTR});
        EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), AssertionFailed(kMain, kLoopSelect));
    }
}

TEST_F(Loop, FailsAnAssertionWhenASecondDvrKnocks) {
    NextSelect({1, {kServer}});
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(),
                 AssertionFailed(kMain, "FD_ISSET(g_clientFd, &readFds)"));
}

TEST_F(Loop, FailsAnAssertionWhenASecondDvrKnocksLater) {
    ScriptMessage(0);
    NextSelect({1, {kServer}});
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket), LoopWait(),
                 AssertionFailed(kMain, "FD_ISSET(g_clientFd, &readFds)"));
}

TEST_F(Loop, FailsAnAssertionWhenTheClientHasOnlyAnException) {
    NextSelect({1, {}, {kSocket}});
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(),
                 AssertionFailed(kMain, "FD_ISSET(g_clientFd, &readFds)"));
}

TEST_F(Loop, TakesAnyResultButCloseForContinue) {
    int message = 0;
    std::vector<Entry> entries = {FirstLoopWait()};
    for (const int result : {2, -1, 77, 0, -2147483647}) {
        ScriptMessage(result);
        entries.push_back(Handled(options, kSocket, ++message));
        entries.push_back(LoopWait());
    }
    EXPECT_ABORT(RunMain(), Connected(), entries, Unscripted("select"));
}

/// When a connection's dialogue is over.
class Closing : public Loop {
 protected:
    static Entries Closed(int client) {
        return std::vector<Entry>{Slept(1), Logged(16, "Closing client socket..."), CloseCalled(client)};
    }
};

TEST_F(Closing, PausesLogsClosesAndAcceptsTheNextDvrWithoutALine) {
    ScriptMessage(1);
    NextAcceptReturns(kSocket, "10.0.0.6", 50001);
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket), Slept(1),
                 Logged(16, "Closing client socket..."), CloseCalled(kSocket), AcceptCalled(kServer, 16),
                 LoopWait(), Unscripted("select"));
}

TEST_F(Closing, BlocksInAcceptWithoutAWait) {
    ScriptMessage(1);
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket), Closed(kSocket),
                 AcceptCalled(kServer, 16), Unscripted("accept"));
}

TEST_F(Closing, KeepsTheProtocolObject) {
    ScriptMessage(1);
    NextAcceptReturns(kSocket);
    ScriptMessage(1);
    NextAcceptReturns(kSocket);
    ScriptMessage(0);
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket, 1), Closed(kSocket),
                 AcceptCalled(kServer, 16), LoopWait(), Handled(options, kSocket, 2), Closed(kSocket),
                 AcceptCalled(kServer, 16), LoopWait(), Handled(options, kSocket, 3), LoopWait(),
                 Unscripted("select"));
}

TEST_F(Closing, KeepsTheProtocolObjectOfTheNewerDialect) {
    TestOptions newer;
    newer.protocol = 2;
    newer.closeEarly = 1;
    ScriptMessage(1);
    NextAcceptReturns(kSocket);
    ScriptMessage(0);
    EXPECT_ABORT(RunMain({"-p2", "-c1"}), LoggerSetUp(), Logged(32, "'protocol' option set to 2"),
                 Logged(32, "closeEarly set to 1"), SignalCalled(SIGINT), Connection(), FirstLoopWait(),
                 Handled(newer, kSocket, 1), Closed(kSocket), AcceptCalled(kServer, 16), LoopWait(),
                 Handled(newer, kSocket, 2), LoopWait(), Unscripted("select"));
}

TEST_F(Closing, WaitsForTheNewDescriptorButDoesNotTellTheProtocolObject) {
    ScriptMessage(1);
    NextAcceptReturns(75);
    NextSelect({1, {75}});
    NextHandleMessageReturns(1);
    NextAcceptReturns(76);
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket, 1), Closed(kSocket),
                 AcceptCalled(kServer, 16), SelectCalled(146, {70, 75}, {70, 75}, 10000, 0),
                 Handled(options, kSocket, 2), Closed(75), AcceptCalled(kServer, 16),
                 SelectCalled(147, {70, 76}, {70, 76}, 10000, 0), Unscripted("select"));
}

TEST_F(Closing, FailsAnAssertionWhenTheNextDvrCannotBeAccepted) {
    ScriptMessage(1);
    NextAcceptReturns(-1, "", 0, ECONNABORTED);
    EXPECT_ABORT(RunMain(), Connected(), FirstLoopWait(), Handled(options, kSocket), Closed(kSocket),
                 AcceptCalled(kServer, 16), AssertionFailed(kMain, "g_clientFd not_eq -1"));
}

}  // namespace
