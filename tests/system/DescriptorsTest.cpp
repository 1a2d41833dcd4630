#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "Dialogue.h"

namespace {

using DescriptorsClosedAtStart = Dialect10;

TEST_F(DescriptorsClosedAtStart, AreNotTakenForASocket) {
    Launch launch;
    launch.closedDescriptors = {STDIN_FILENO, STDERR_FILENO};
    harness.emplace(std::vector<std::string>{}, launch);
    harness->Listens();
    const std::vector<int> open = harness->GetProcess().Descriptors();
    const std::vector<int> standard = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    EXPECT_TRUE(std::includes(open.begin(), open.end(), standard.begin(), standard.end()));
    harness->StopsOnInterrupt();
}

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
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    dvr->Sends(Xml({Description("E1", {"m1"})}));
    dvr->Receives(v1::GetFile("E1", "m1"));
    dvr->Sends(FileComplete("E1", "m1"));
    dvr->Receives(v1::EventXferComplete({"E1"}));
    dvr->Receives(v1::kDone);
    dvr->ReceivesEnd();
    Reconnect();
    dvr->Sends(Ok());
    dvr->Receives(v1::kGetXml);
    harness->GetsSignal(SIGINT);
    harness->EndsWithStatus(44);
    dvr->ReceivesEnd();
}

}  // namespace
