#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "tests/support/Dialogue.h"
#include "tests/support/Sockets.h"

namespace {

using Listener = Dialect10;

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

TEST_F(Listener, ReportsThePeerWithItsAddressAndPort) {
    world.AddAddress("10.0.0.5");
    Harness running;
    running.Listens();
    const ScriptedDvr peer("10.0.0.5", 50000);
    running.Logs(16, "Connected to: fam=2  10.0.0.5:50000");
    running.StopsOnInterrupt();
}

}  // namespace
