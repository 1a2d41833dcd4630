#include <gtest/gtest.h>

#include <cstdlib>
#include <type_traits>

#include "LogClient.h"
#include "SysLogMsg.h"
#include "tests/harness/platform/Subject.h"

namespace {

TEST(LogClient, IsOneForTheProcess) {
    const Outcome outcome =
        RunSubject([] { Report(LogClient::Instance() == LogClient::Instance() ? "same" : "different"); });
    EXPECT_EQ(outcome.report, "same");
}

TEST(LogClient, KeepsTheProcessName) {
    const Outcome outcome = RunSubject([] {
        LogClient::Instance()->ProcessName(std::string("velloran"));
        Report(LogClient::Instance()->ProcessName());
    });
    EXPECT_EQ(outcome.report, "velloran");
}

TEST(LogClient, KeepsTheLevelMask) {
    const Outcome outcome = RunSubject([] {
        for (const unsigned int mask : {127U, 0U, 64U, 0xffffffffU}) {
            LogClient::Instance()->Level(mask);
            Report(std::to_string(LogClient::Instance()->Level()) + " ");
        }
    });
    EXPECT_EQ(outcome.report, "127 0 64 4294967295 ");
}

TEST(LogClient, WritesNothingWhenItIsSetUp) {
    const Outcome outcome = RunSubject([] {
        LogClient::Instance()->ProcessName("velloran");
        LogClient::Instance()->Level(127);
    });
    EXPECT_EQ(outcome.output, "");
}

TEST(LogClient, IsNotDestroyedAtExit) {
    // Registered first, so it runs after everything that is destroyed at exit. The name is too long to
    // survive in the memory of a destroyed string.
    const Outcome outcome = RunSubject([] {
        std::atexit([] { Log(1, "shutting down"); });
        LogClient::Instance()->ProcessName("a-name-that-a-string-keeps-on-the-heap");
        std::exit(44);
    });
    EXPECT_EQ(outcome.output.substr(26), "Z a-name-that-a-string-keeps-on-the-heap 1 shutting down\n");
    EXPECT_EQ(WEXITSTATUS(outcome.status), 44);
}

TEST(SysLogMsg, IsALogMsg) {
    EXPECT_TRUE((std::is_convertible_v<SysLogMsg*, LogMsg*>));
}

TEST(SysLogMsg, WritesItsLineWhenItIsDestroyedAndNotBefore) {
    const Outcome outcome = RunSubject([] {
        LogClient::Instance()->ProcessName("velloran");
        Log(1, "first");
        {
            SysLogMsg message;
            message.Log(2, LogClient::Instance()->ProcessName()) << "third";
            Log(1, "second");
        }
        Log(1, "fourth");
    });
    ASSERT_EQ(outcome.writes.size(), 4U);
    EXPECT_EQ(TextOf(outcome.writes[1]), "second");
    EXPECT_EQ(TextOf(outcome.writes[2]), "third");
    EXPECT_EQ(TextOf(outcome.writes[3]), "fourth");
}

}  // namespace
