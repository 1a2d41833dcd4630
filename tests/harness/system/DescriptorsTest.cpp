#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iterator>

#include "tests/support/Dialogue.h"

namespace {

using DescriptorsClosedAtStart = Dialect10;

/// Each set of the standard descriptors, as bits.
class DescriptorsThatAreClosedAtStart : public Dialect10, public testing::WithParamInterface<int> {
 protected:
    static bool IsClosed(int descriptor) { return (GetParam() >> descriptor & 1) not_eq 0; }
};

TEST_P(DescriptorsThatAreClosedAtStart, AreNotTakenForASocket) {
    const std::vector<int> standard = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    Launch launch;
    std::copy_if(standard.begin(), standard.end(), std::back_inserter(launch.closedDescriptors), IsClosed);
    harness.emplace(std::vector<std::string>{}, launch);
    harness->Listens();
    const std::vector<int> open = harness->GetProcess().Descriptors();
    EXPECT_TRUE(std::includes(open.begin(), open.end(), standard.begin(), standard.end()));
    if (IsClosed(STDOUT_FILENO)) {
        harness->GetsSignal(SIGINT);
        harness->EndsWithStatus(44);
    } else {
        harness->StopsOnInterrupt();
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, DescriptorsThatAreClosedAtStart, testing::Range(1, 8));

TEST_F(DescriptorsClosedAtStart, LeaveTheSecondDialogueItsDescriptor) {
    Launch launch;
    launch.closedDescriptors = {STDIN_FILENO};
    Connect({}, launch);
    ExportsE1();
    IsDone({"E1"});
    Reconnect();
    Opens();
    Ends();
}

TEST_F(DescriptorsClosedAtStart, SendNoLogLineToThePeer) {
    Launch launch;
    launch.closedDescriptors = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    harness.emplace(std::vector<std::string>{}, launch);
    harness->Listens();
    dvr.emplace();
    ExportsE1Unseen();
    Reconnect();
    OpensUnseen();
    harness->GetsSignal(SIGINT);
    harness->EndsWithStatus(44);
    dvr->ReceivesEnd();
}

}  // namespace
