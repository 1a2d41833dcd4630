#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include "rig/base/Descriptor.h"
#include "rig/base/Port.h"
#include "rig/campaign/execution/FreePort.h"
#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

using namespace rig;
using namespace rig::campaign;

class PortTest : public testing::Test {
 protected:
    /// Connects a DVR; then the harness closes both its sockets, and the DVR its own if it is to.
    void LeaveConnection(bool dvrCloses = true) {
        rig::Descriptor server(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(kHarnessPort);
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        ASSERT_EQ(bind(server.Number(), any, sizeof address), 0);
        ASSERT_EQ(listen(server.Number(), 1), 0);
        dvr_ = rig::Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(connect(dvr_.Number(), any, sizeof address), 0);
        rig::Descriptor accepted(accept4(server.Number(), nullptr, nullptr, SOCK_CLOEXEC));
        ASSERT_TRUE(LookAtPort(kHarnessPort).IsConnected());
        EXPECT_EQ(LookAtPort(kHarnessPort).Callers().size(), 1U);
        accepted.Close();
        server.Close();
        if (dvrCloses) {
            dvr_.Close();
        }
        ASSERT_TRUE(Until([] { return LookAtPort(kHarnessPort).SecondsHeld().value_or(0) > 0; }));
    }

    static unsigned int State() {
        const PortUse use = LookAtPort(kHarnessPort);
        return use.connections.empty() ? 0 : use.connections.front().state;
    }

    World world_;
    rig::Descriptor dvr_;
};

TEST_F(PortTest, IsHeldForAMinuteWhereTheHarnessClosedFirst) {
    LeaveConnection();
    const PortUse use = LookAtPort(kHarnessPort);
    ASSERT_EQ(use.connections.size(), 1U);
    EXPECT_EQ(use.connections[0].state, static_cast<unsigned int>(TCP_TIME_WAIT));
    EXPECT_FALSE(use.isListening);
    EXPECT_FALSE(use.IsConnected());
    EXPECT_GT(use.SecondsHeld(), 50);
    EXPECT_LE(use.SecondsHeld(), 60);
}

TEST_F(PortTest, IsHeldForTwoWhereTheDvrHasNotClosedYet) {
    LeaveConnection(false);
    EXPECT_EQ(State(), static_cast<unsigned int>(TCP_FIN_WAIT2));
    EXPECT_GT(LookAtPort(kHarnessPort).SecondsHeld(), 110);
    EXPECT_LE(LookAtPort(kHarnessPort).SecondsHeld(), 120);
}

TEST_F(PortTest, IsFreedAtOnce) {
    LeaveConnection();
    FreePort(LookAtPort(kHarnessPort), false);
    EXPECT_EQ(State(), 0U);
}

TEST_F(PortTest, IsFreedWithoutPrivilegesAfterADvrOnThisMachine) {
    LeaveConnection();
    Knock(LookAtPort(kHarnessPort).connections.at(0));
    EXPECT_EQ(State(), 0U);
}

TEST_F(PortTest, IsFreedByTheKernelWhereThatKnowsHow) {
    LeaveConnection(false);
    const bool isDropped = Drop(LookAtPort(kHarnessPort).connections.at(0));
    EXPECT_EQ(State(), isDropped ? 0U : static_cast<unsigned int>(TCP_FIN_WAIT2));
}

TEST_F(PortTest, IsNotFreedOfWhatTheDvrHasNotClosedUnlessItMustBe) {
    LeaveConnection(false);
    FreePort(LookAtPort(kHarnessPort), false);
    EXPECT_EQ(State(), static_cast<unsigned int>(TCP_FIN_WAIT2));
}

TEST_F(PortTest, IsNotFreedOfWhatSomebodyHolds) {
    const int ends[] = {socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0),
                        socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(kHarnessPort);
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(bind(ends[0], any, sizeof address), 0);
    ASSERT_EQ(listen(ends[0], 1), 0);
    ASSERT_EQ(connect(ends[1], any, sizeof address), 0);
    const rig::Descriptor accepted(accept4(ends[0], nullptr, nullptr, SOCK_CLOEXEC));
    close(ends[0]);
    EXPECT_FALSE(LookAtPort(kHarnessPort).SecondsHeld());
    FreePort(LookAtPort(kHarnessPort), true);
    EXPECT_TRUE(LookAtPort(kHarnessPort).IsConnected());
    close(ends[1]);
    EXPECT_TRUE(Until([] { return LookAtPort(kHarnessPort).IsClosedByPeer(); }));
}

}  // namespace
