#include <gtest/gtest.h>
#include <poll.h>

#include <cstdlib>

#include "tests/support/Dialogue.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

/// A harness whose first wait finds 3 of its 10000 seconds left (ShortBudget.cpp).
class TimeBudget : public Dialect10 {
 protected:
    void StartsWith3Seconds() {
        start_ = Clock::now();
        setenv("LD_PRELOAD", VELLORAN_SHORT_BUDGET, 1);
        harness.emplace();
        unsetenv("LD_PRELOAD");
        harness->Listens();
    }

    /// Nothing happens for this long.
    static void Passes(milliseconds time) {
        pollfd nothing = {-1, 0, 0};
        poll(&nothing, 1, static_cast<int>(time.count()));
    }

    /// The waits have taken 3 seconds. If one of them had got its time back, the run would not have ended.
    void IsSpent() const { EXPECT_GE(Clock::now() - start_, seconds(3)); }

 private:
    Clock::time_point start_;
};

TEST_F(TimeBudget, EndsTheRunWhenNoDvrConnects) {
    StartsWith3Seconds();
    harness->FailsAssertion(kMain, "select(g_serverFd+1, &readFds, NULL, &exceptionFds, &time) == 1");
    IsSpent();
}

TEST_F(TimeBudget, IsOneForAllWaitsAndEndsADialogueThatFallsSilent) {
    StartsWith3Seconds();
    Passes(milliseconds(1000));  // of the first wait
    dvr.emplace();
    harness->LogsUpTo(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    Passes(milliseconds(1000));  // of the first wait of the loop
    Opens();
    Dies(kMain, "select(g_serverFd+g_clientFd+1, &readFds, NULL, &exceptionFds, &time) == 1");
    IsSpent();
}

TEST_F(TimeBudget, IsNotFilledAgainForTheNextConnection) {
    StartsWith3Seconds();
    dvr.emplace();
    harness->LogsUpTo(16, "Connected to: fam=2  127.0.0.1:" + std::to_string(dvr->Port()));
    Passes(milliseconds(2000));
    ExportsE1();
    IsDone({"E1"});
    Reconnect();
    Dies(kMain, "select(g_serverFd+g_clientFd+1, &readFds, NULL, &exceptionFds, &time) == 1");
    IsSpent();
}

}  // namespace
