#include <cerrno>

#include "tests/harness/unit/driver/Driver.h"

extern int g_serverFd;
extern int g_clientFd;
extern int serverFd;
extern int clientFd;

namespace {

Entries Opening() {
    return std::vector<Entry>{SignalCalled(SIGINT), SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP)};
}

Entry Bound() {
    return BindCalled(kServer, "0.0.0.0", 5001);
}

Entry FirstWait() {
    return SelectCalled(kServer + 1, {kServer}, {kServer}, 10000, 0);
}

class Start : public Driver {};

TEST_F(Start, FindsNoDescriptorOpen) {
    EXPECT_EQ(g_serverFd, -1);
    EXPECT_EQ(g_clientFd, -1);
    EXPECT_EQ(serverFd, -1);
    EXPECT_EQ(clientFd, -1);
}

TEST_F(Start, SetsUpLoggerSignalAndSocketInThisOrderAndWaitsForTheDvr) {
    ScriptListening();
    EXPECT_ABORT(RunMain(), NamedTheProcess("velloran"), SetTheLevelMask(127), SignalCalled(SIGINT),
                 SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP), BindCalled(kServer, "0.0.0.0", 5001),
                 ListenCalled(kServer, 5), SelectCalled(kServer + 1, {kServer}, {kServer}, 10000, 0),
                 Unscripted("select"));
}

TEST_F(Start, TakesNothingFromAnEarlierLoggerSetting) {
    LogMask(0);
    LogClient::Instance()->ProcessName("other");
    TakeJournal();
    const std::string output = RunToItsEnd([] { RunMain({"-e", "-h"}); });
    LogMask(127);
    TakeJournal();
    EXPECT_EQ(output, Expected({LoggerSetUp(), Logged(32, "'invalidEvent' flag set"), Usage()}) +
                          "ended with status 0\n");
}

TEST_F(Start, WithoutSignalHandlerEndsWithStatus1) {
    NextSignalFails();
    EXPECT_EXIT_STATUS(1, RunMain(), LoggerSetUp(), SignalCalled(SIGINT),
                       Logged(1, "Could not install SIGINT handler"));
}

TEST_F(Start, WithoutSignalHandlerLogsTheSwitchesAllTheSame) {
    NextSignalFails();
    EXPECT_EXIT_STATUS(1, RunMain({"-x"}), LoggerSetUp(), Logged(32, "'xferInProgress' flag set"),
                       SignalCalled(SIGINT), Logged(1, "Could not install SIGINT handler"));
}

TEST_F(Start, WithoutSocketFailsAnAssertion) {
    NextSocketReturns(-1, EMFILE);
    EXPECT_ABORT(RunMain(), LoggerSetUp(), Opening(), AssertionFailed(kMain, "g_serverFd not_eq -1"));
}

TEST_F(Start, OnATakenOrForbiddenPortSaysSoInTwoLinesAndEndsWithStatus99) {
    const std::pair<int, std::string> errors[] = {{EADDRINUSE, "Address already in use"},
                                                  {EACCES, "Permission denied"}};
    for (const auto& [error, text] : errors) {
        NextSocketReturns(kServer);
        NextBindReturns(-1, error);
        EXPECT_EXIT_STATUS(99, RunMain(), LoggerSetUp(), Opening(), Bound(),
                           Logged(1, "bind failed: " + std::to_string(error)),
                           Logged(1, "bind failed: " + text));
    }
}

TEST_F(Start, WithoutListeningFailsAnAssertion) {
    for (const int result : {-1, 1}) {
        NextSocketReturns(kServer);
        NextBindReturns(0);
        NextListenReturns(result, EADDRINUSE);
        EXPECT_ABORT(RunMain(), LoggerSetUp(), Opening(), Bound(), ListenCalled(kServer, 5),
                     AssertionFailed(kMain, "listen(g_serverFd, 5) == 0"));
    }
}

/// The wait for the first DVR.
class FirstWaitOf : public Driver {
 protected:
    /// Scripts a start in which the first wait ends in this way.
    static void ScriptFirstWait(const Wait& wait) {
        ScriptListening();
        NextSelect(wait);
    }

    static Entries UpToTheWait() {
        return std::vector<Entry>{SignalCalled(SIGINT), SocketCalled(AF_INET, SOCK_STREAM, IPPROTO_TCP),
                                  Bound(), ListenCalled(kServer, 5), FirstWait()};
    }
};

TEST_F(FirstWaitOf, ThatFindsAnythingButOneDescriptorFailsAnAssertion) {
    for (const int result : {0, -1, 2}) {
        ScriptFirstWait({result, {kServer}, {}, 0, EINTR});
        EXPECT_ABORT(
            RunMain(), LoggerSetUp(), UpToTheWait(),
            AssertionFailed(kMain, "select(g_serverFd+1, &readFds, NULL, &exceptionFds, &time) == 1"));
    }
}

TEST_F(FirstWaitOf, ThatFindsOnlyAnExceptionFailsAnAssertion) {
    ScriptFirstWait({1, {}, {kServer}});
    EXPECT_ABORT(RunMain(), LoggerSetUp(), UpToTheWait(),
                 AssertionFailed(kMain, "FD_ISSET(g_serverFd, &readFds)"));
}

TEST_F(FirstWaitOf, ADvrThatCannotBeAcceptedFailsAnAssertion) {
    ScriptFirstWait({1, {kServer}});
    NextAcceptReturns(-1, "", 0, ECONNABORTED);
    EXPECT_ABORT(RunMain(), LoggerSetUp(), UpToTheWait(), AcceptCalled(kServer, 110),
                 AssertionFailed(kMain, "g_clientFd not_eq -1"));
}

/// The line of the first connection.
struct Peer {
    std::string name;
    std::string address;
    std::uint16_t port;
    std::string line;
};

void PrintTo(const Peer& peer, std::ostream* stream) {
    *stream << peer.name;
}

class ConnectedLine : public FirstWaitOf, public testing::WithParamInterface<Peer> {};

TEST_P(ConnectedLine, NamesThePeer) {
    ScriptFirstWait({1, {kServer}});
    NextAcceptReturns(kSocket, GetParam().address, GetParam().port);
    EXPECT_ABORT(RunMain(), LoggerSetUp(), UpToTheWait(), AcceptCalled(kServer, 110),
                 Logged(16, GetParam().line), FirstLoopWait(), Unscripted("select"));
}

INSTANTIATE_TEST_SUITE_P(
    Of, ConnectedLine,
    testing::Values(Peer{"APrivateAddress", "192.168.0.17", 40123, "Connected to: fam=2  192.168.0.17:40123"},
                    Peer{"ASmallAddress", "10.0.0.5", 50000, "Connected to: fam=2  10.0.0.5:50000"},
                    Peer{"LargeBytes", "255.254.253.252", 65535,
                         "Connected to: fam=2  255.254.253.252:65535"},
                    Peer{"SmallBytes", "1.2.3.4", 1, "Connected to: fam=2  1.2.3.4:1"},
                    Peer{"APortOfOneHighByte", "127.0.0.1", 256, "Connected to: fam=2  127.0.0.1:256"}),
    [](const auto& peer) { return peer.param.name; });

}  // namespace
