#include <gtest/gtest.h>

#include "tests/support/Dialogue.h"

namespace {

const char* const kLoopWait = "select(g_serverFd+g_clientFd+1, &readFds, NULL, &exceptionFds, &time) == 1";
const char* const kClientReadable = "FD_ISSET(g_clientFd, &readFds)";

using std::chrono::milliseconds;
using std::chrono::seconds;

using ConnectionLoop = Dialect10;

TEST_F(ConnectionLoop, ServesTheNextDialoguesWithTheSameObjectOnTheSameDescriptorWithoutAConnectedLine) {
    Connect();
    const std::vector<int> descriptors = harness->GetProcess().Descriptors();
    std::vector<std::string> ids;
    for (const char* id : {"E1", "E2", "E3"}) {
        Opens();
        EXPECT_EQ(descriptors, harness->GetProcess().Descriptors());
        Describes(id, {"m"});
        Completes(id, "m");
        ids.emplace_back(id);
        IsDone(ids);
        Reconnect();
    }
    Opens();
    Ends();
    EXPECT_EQ(
        "<msg req=\"EVENT_XFER_COMPLETE\">\n"
        "    <events>\n"
        "        <string>E1</string>\n"
        "        <string>E2</string>\n"
        "        <string>E3</string>\n"
        "    </events>\n"
        "</msg>\n",
        ReadFile("/mnt/hd/outgoingETCstring"));
}

TEST_F(ConnectionLoop, ServesADvrThatKnockedDuringThePauseBeforeClosing) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    ScriptedDvr next;
    next.Sends(Ok());
    harness->Logs(16, "Closing client socket...");
    harness->Logs(1, "got an OK, sending GET_XML");
    next.Receives(v1::kGetXml);
    harness->StopsOnInterrupt();
}

TEST_F(ConnectionLoop, ClosesTheConnectionOneSecondAfterDone) {
    Connect();
    Opens();
    Describes("E1", {"m1"});
    const Clock::time_point start = Clock::now();
    Completes("E1", "m1");
    ReportsDone({"E1"});
    EXPECT_FALSE(dvr->HasSomethingToRead()) << "closed without a pause";
    harness->Logs(16, "Closing client socket...");
    const Clock::duration taken = Clock::now() - start;
    dvr->ReceivesEnd();
    EXPECT_GE(taken, milliseconds(250 + 1000));
    EXPECT_LT(taken, milliseconds(250 + 1000) + seconds(3));
    harness->StopsOnInterrupt();
}

TEST_F(ConnectionLoop, EndsAtUrgentDataAlone) {
    Connect();
    dvr->SendsUrgentByte();
    harness->FailsAssertion(kMain, kClientReadable);
}

TEST_F(ConnectionLoop, EndsAtUrgentDataBesideAMessage) {
    Connect();
    const std::string first = Frame(Ok());
    dvr->SendsAndSeesRead(first.substr(0, 5));
    dvr->SendsBytes(first.substr(5) + Frame(Ok()));
    dvr->SendsUrgentByte();
    harness->Logs(1, "got an OK, sending GET_XML");
    harness->FailsAssertion(kMain, kLoopWait);
}

}  // namespace
