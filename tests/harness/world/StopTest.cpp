#include <gtest/gtest.h>

#include <csignal>

#include "tests/harness/world/Still.h"
#include "tests/support/Dialogue.h"

namespace {

/// The process is stopped and goes on, as by Ctrl-Z and "fg", or by a debugger.
class Stopped10 : public Dialect10 {
 protected:
    void StopsAndGoesOn(Here here = Here::current()) {
        StandsStill(*harness, here);
        harness->GetsSignal(SIGCONT);
    }

    /// While the process is stopped, the DVR sends a frame, or part of one.
    void SendsWhileStopped(const std::string& bytes, Here here = Here::current()) {
        StandsStill(*harness, here);
        dvr->SendsBytes(bytes, here);
        harness->GetsSignal(SIGCONT);
    }
};

TEST_F(Stopped10, GoesOnWhereItWas) {
    harness.emplace();
    harness->Listens();
    StopsAndGoesOn();  // waits for the first DVR
    dvr.emplace();
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    StopsAndGoesOn();  // waits for a message
    Opens();
    const std::string message = Frame(Xml({Description("E1", {"m1"})}));
    dvr->SendsAndSeesRead(message.substr(0, 9));
    StopsAndGoesOn();  // pauses in the text
    dvr->SendsAndSeesRead(message.substr(9, 9));
    SendsWhileStopped(message.substr(18));
    harness->Logs(32, "Found event E1");
    dvr->Receives(v1::GetFile("E1", "m1"));
    Completes("E1", "m1");
    ReportsDone({"E1"});
    StopsAndGoesOn();  // pauses before it closes
    Closes();
    StopsAndGoesOn();  // waits for the next DVR
    StandsStill(*harness);
    Reconnect();
    harness->GetsSignal(SIGCONT);
    SendsWhileStopped(Frame(Ok()));
    harness->Logs(1, "got an OK, sending GET_XML");
    dvr->Receives(v1::kGetXml);
    Ends();
}

TEST_F(Stopped10, TakesTheInterruptWhenItGoesOn) {
    Connect();
    Opens();
    StandsStill(*harness);
    harness->GetsSignal(SIGINT);
    EXPECT_EQ('T', StateOf(*harness));
    harness->GetsSignal(SIGCONT);
    harness->Logs(1, "shutting down");
    harness->EndsWithStatus(44);
    dvr->ReceivesEnd();
}

using Stopped20 = Dialect20;

TEST_F(Stopped20, GoesOnInThePauseBetweenFiles) {
    Start();
    ReachesFirstFile("E1", {"m", "v", "w"});
    Completes("E1", "m", 2);
    dvr->Receives(v2::GetFile("E1", "v"));
    StandsStill(*harness);
    harness->GetsSignal(SIGCONT);
    Completes("E1", "v", 1);
    harness->Logs(32, "calling SendFileRequest(E1/w, false)");
    dvr->Receives(v2::GetFile("E1", "w"));
    Ends();
}

}  // namespace
