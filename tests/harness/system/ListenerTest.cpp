#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>

#include "tests/support/Dialogue.h"
#include "tests/support/Sockets.h"

namespace {

using Listener = Dialect10;

/// A socket of the test's own that holds port 5001.
class PortTaken {
 public:
    PortTaken() : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(5001);
        EXPECT_EQ(0, bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    }
    ~PortTaken() { close(fd_); }
    PortTaken(const PortTaken&) = delete;
    PortTaken& operator=(const PortTaken&) = delete;

 private:
    int fd_;
};

/// From now on the process may have at most this many descriptors.
void LimitDescriptors(const Harness& harness, std::size_t count) {
    const rlimit limit = {count, count};
    ASSERT_EQ(0, prlimit(harness.GetProcess().Id(), RLIMIT_NOFILE, &limit, nullptr));
}

TEST_F(Listener, ListensOnPort5001OfAllAddresses) {
    Harness running;
    running.Listens();
    EXPECT_TRUE(sockets::IsListening(5001, INADDR_ANY));
    running.StopsOnInterrupt();
}

TEST_F(Listener, KeepsABacklogOfFive) {
    Connect();
    dvr->SendsAndSeesRead(Prefix(100) + "a text that does not end");

    // The kernel lets one more connection wait than the backlog says.
    std::vector<std::unique_ptr<ScriptedDvr>> waiting;
    waiting.reserve(6);
    for (int count = 0; count < 6; ++count) {
        waiting.push_back(std::make_unique<ScriptedDvr>());
    }
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5001);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(-1, connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    EXPECT_EQ(EINPROGRESS, errno);
    pollfd connected = {fd, POLLOUT, 0};
    EXPECT_EQ(0, poll(&connected, 1, 300)) << "one connection too many";
    close(fd);
    harness->StopsOnInterrupt();
}

TEST_F(Listener, ExitsWith99WhenThePortIsTaken) {
    const PortTaken taken;
    Harness second;
    second.LogsInFull({{1, "bind failed: 98"}, {1, "bind failed: Address already in use"}});
    second.EndsWithStatus(99);
    EXPECT_EQ("", second.StandardError());
}

TEST_F(Listener, ExitsWith99WhenASecondHarnessIsStarted) {
    Harness first;
    first.Listens();
    Harness second({"-p", "2"});
    second.LogsInFull({{32, "'protocol' option set to 2"},
                       {1, "bind failed: 98"},
                       {1, "bind failed: Address already in use"}});
    second.EndsWithStatus(99);
    first.StopsOnInterrupt();
}

TEST_F(Listener, ExitsWith99WhileAnEarlierRunsConnectionHoldsThePort) {
    Connect();
    ExportsE1();
    IsDone({"E1"});
    dvr->HangsUp();
    harness->StopsOnInterrupt();

    Harness second;
    second.LogsInFull({{1, "bind failed: 98"}, {1, "bind failed: Address already in use"}});
    second.EndsWithStatus(99);
}

TEST_F(Listener, FailsAnAssertionWithoutADescriptorForItsSocket) {
    Launch launch;
    launch.descriptorLimit = 4;  // the standard three and the log's
    Harness starved({}, launch);
    starved.FailsAssertion(kMain, "g_serverFd not_eq -1");
}

TEST_F(Listener, FailsAnAssertionWithoutADescriptorForTheFirstConnection) {
    harness.emplace();
    harness->Listens();
    LimitDescriptors(*harness, harness->GetProcess().Descriptors().size());
    dvr.emplace();
    harness->FailsAssertion(kMain, "g_clientFd not_eq -1");
}

TEST_F(Listener, FailsAnAssertionWithoutADescriptorForALaterConnection) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    // Still in the pause before it closes: the descriptor that it frees is then beyond the limit.
    LimitDescriptors(*harness, harness->GetProcess().Descriptors().size() - 1);
    harness->Logs(16, "Closing client socket...");
    harness->FailsAssertion(kMain, "g_clientFd not_eq -1");
}

struct Peer {
    std::string name;
    std::string address;
    std::uint16_t port;
};

std::ostream& operator<<(std::ostream& out, const Peer& peer) {
    return out << peer.address << ":" << peer.port;
}

class ListenerReportsThePeer : public SystemTest, public testing::WithParamInterface<Peer> {};

TEST_P(ListenerReportsThePeer, WithItsAddressAndPort) {
    const Peer& peer = GetParam();
    world.AddAddress(peer.address);
    Harness harness;
    harness.Listens();
    ScriptedDvr dvr(peer.address, peer.port);
    harness.Logs(16, "Connected to: fam=2  " + peer.address + ":" + std::to_string(peer.port));
    harness.StopsOnInterrupt();
}

INSTANTIATE_TEST_SUITE_P(At, ListenerReportsThePeer,
                         testing::Values(Peer{"PrivateNetwork", "10.0.0.5", 50000},
                                         Peer{"RigNetwork", "192.168.0.17", 40123},
                                         Peer{"HighBytes", "203.0.113.250", 65535},
                                         Peer{"LowPort", "172.16.0.1", 255}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Listener, NeverSpeaksFirst) {
    Connect();
    Ends();
}

}  // namespace
