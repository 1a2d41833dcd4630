#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/Dialogue.h"
#include "tests/support/Sockets.h"

namespace {

using Interrupt = Dialect10;

TEST_F(Interrupt, StopsItAlsoWhereTheShellIgnoresIt) {
    Launch inBackground;
    inBackground.interruptIgnored = true;
    Harness running({}, inBackground);
    running.Listens();
    running.StopsOnInterrupt();
}

TEST_F(Interrupt, ShutsBothSocketsDown) {
    Connect();
    // Someone else holds the sockets too, so they outlive the process: the peers still learn of the end.
    const std::vector<int> descriptors = harness->GetProcess().Descriptors();
    ASSERT_LE(2u, descriptors.size());
    const int client = harness->GetProcess().Copy(descriptors.back());
    const int server = harness->GetProcess().Copy(descriptors[descriptors.size() - 2]);
    ASSERT_NE(-1, client);
    ASSERT_NE(-1, server);
    harness->StopsOnInterrupt();
    dvr->ReceivesEnd();
    EXPECT_FALSE(sockets::IsListening(5001));
    close(client);
    close(server);
}

}  // namespace
