#include <gtest/gtest.h>

#include <csignal>

#include "tests/harness/world/Still.h"
#include "tests/support/Dialogue.h"

namespace {

const char* const kReset = "read error: 104:Connection reset by peer";

/// What a reset between two messages leads to: one read error, then reads without pause.
void ReadsOnWithoutRest(Harness& harness, Here here = Here::current()) {
    harness.LogsUpTo(1, kReset, here);
    const auto before = harness.GetProcess().ProcessorTime();
    const auto isBusy = [&] {
        return harness.GetProcess().ProcessorTime() - before >= std::chrono::milliseconds(50);
    };
    if (not Until(isBusy)) {
        FailAt(here, "the harness does not read on");
    }
    harness.StopsOnInterrupt(here);
}

using Reset = Dialect10;

TEST_F(Reset, BeforeTheFirstConnectionIsAcceptedIsReadOn) {
    harness.emplace();
    harness->Listens();
    StandsStill(*harness);
    dvr.emplace();
    const std::string port = std::to_string(dvr->Port());
    dvr->Resets();
    harness->GetsSignal(SIGCONT);
    harness->Logs(16, "Connected to: fam=2  127.0.0.1:" + port);
    ReadsOnWithoutRest(*harness);
}

TEST_F(Reset, BetweenTwoMessagesIsLoggedOnceAndReadOn) {
    Connect();
    Opens();
    dvr->Resets();
    ReadsOnWithoutRest(*harness);
}

TEST_F(Reset, InsideAPrefixIsLoggedOnceAndReadOn) {
    Connect();
    Opens();
    dvr->SendsAndSeesRead("\x8f");
    dvr->Resets();
    ReadsOnWithoutRest(*harness);
}

TEST_F(Reset, DuringThePauseBeforeClosingIsNotNoticed) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    dvr->Resets();
    harness->Logs(16, "Closing client socket...");
    Reconnect();
    Opens();
    Ends();
}

TEST_F(Reset, BeforeALaterConnectionIsAcceptedIsReadOn) {
    Connect();
    ExportsE1();
    ReportsDone({"E1"});
    ScriptedDvr next;
    next.Resets();
    harness->Logs(16, "Closing client socket...");
    ReadsOnWithoutRest(*harness);
}

}  // namespace
