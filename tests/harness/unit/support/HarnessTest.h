#pragma once

#include <gtest/gtest.h>

#include "LogClient.h"
#include "tests/harness/unit/support/Ending.h"
#include "tests/harness/unit/support/Journal.h"
#include "tests/harness/unit/support/Listener.h"
#include "tests/harness/unit/support/Socket.h"

/// All levels on, all off, and each alone.
constexpr unsigned int kMasks[] = {127, 0, 1, 2, 4, 8, 16, 32, 64};

/// A test that starts with an empty journal, empty scripts and all log levels on. At its end every line of
/// the journal must have been expected and everything fed used.
class HarnessTest : public ::testing::Test {
 protected:
    HarnessTest() {
        ResetSocket();
        ResetListener();
        TakeJournal();
        LogClient::Instance()->ProcessName("velloran");
        LogMask(127);
    }

    void TearDown() override {
        if (not HasFailure()) {
            EXPECT_EQ(TakeJournal(), "") << "lines that the test has not expected";
            EXPECT_EQ(UnusedScript() + UnusedListenerScript(), "");
        }
    }

    static void LogMask(unsigned int mask) { LogClient::Instance()->Level(mask); }
};
