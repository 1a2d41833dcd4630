#include <gtest/gtest.h>

#include <csignal>

#include "tests/harness/world/EachWait.h"
#include "tests/harness/world/Still.h"

namespace {

/// The process is stopped and goes on, as by Ctrl-Z and "fg", or by a debugger.
class Stopped10 : public EachWait {
 protected:
    /// While the process is stopped, the DVR sends a frame, or part of one.
    void SendsWhileStopped(const std::string& bytes, Here here = Here::current()) {
        StandsStill(*harness, here);
        dvr->SendsBytes(bytes, here);
        harness->GetsSignal(SIGCONT);
    }
};

TEST_F(Stopped10, GoesOnWhereItWas) {
    Survives([this](Wait) {
        StandsStill(*harness);
        harness->GetsSignal(SIGCONT);
    });
}

TEST_F(Stopped10, TakesWhatCameMeanwhileWhenItGoesOn) {
    harness.emplace();
    harness->Listens();
    StandsStill(*harness);
    dvr.emplace();
    harness->GetsSignal(SIGCONT);
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    const std::string frame = Frame(Ok());
    SendsWhileStopped(frame.substr(0, 9));
    SendsWhileStopped(frame.substr(9));
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
