#include <gtest/gtest.h>

#include "rig/campaign/evidence/LogTimes.h"
#include "tests/rig/campaign/Statements.h"

namespace rig::campaign {
namespace {

LogTimes TimesOf(const Statements& statements) {
    LogTimes times;
    Feed([&times](const log::Statement& statement) { times.Add(statement); }, statements);
    return times;
}

TEST(LogTimes, SeparatePausesFromWaiting) {
    const LogTimes times = TimesOf({{0, "'protocol' option set to 2"},
                                    {40, "Connected to: fam=2  127.0.0.1:4000"},
                                    {50, "expecting a message of 37 bytes"},
                                    {300, "read success:37"},
                                    {301, "hdr[0]= 32"},
                                    {400, "expecting a message of 37 bytes"},
                                    {750, "read success:37"}});
    EXPECT_DOUBLE_EQ(times.Pauses(), 0.25 + 0.25);
    EXPECT_DOUBLE_EQ(times.Waits(), 0.04 + 0.01 + 0.099 + 0.1);
}

TEST(LogTimes, CountThePauseAfterARequestAsTheHarnesss) {
    const Statements asks = {{0, "filesToReceive size = 2"}, {1, "hdr[0]= 4c"}};
    Statements late = asks;
    late.emplace_back(1301, "expecting a message of 37 bytes");
    EXPECT_DOUBLE_EQ(TimesOf(late).Pauses(), 1);
    EXPECT_DOUBLE_EQ(TimesOf(late).Waits(), 0.3);
    Statements longer = late;
    longer.insert(longer.begin(), {0, "sleepForGetFile set to 2"});
    EXPECT_DOUBLE_EQ(TimesOf(longer).Pauses(), 1.3);
    const LogTimes last =
        TimesOf({{0, "filesToReceive size = 1"}, {1, "hdr[0]= 4c"}, {501, "expecting a message of 3 bytes"}});
    EXPECT_DOUBLE_EQ(last.Pauses(), 0) << "there is no pause after an event's last request";
}

TEST(LogTimes, CountTheSecondBeforeClosing) {
    const LogTimes times =
        TimesOf({{0, "Sending DONE"}, {1, "hdr[0]= 4c"}, {1001, "Closing client socket..."}});
    EXPECT_DOUBLE_EQ(times.Pauses(), 1);
    EXPECT_DOUBLE_EQ(times.Waits(), 0);
}

TEST(LogTimes, TolerateClocksThatGoBack) {
    const LogTimes times = TimesOf({{1000, "hdr[0]= 4c"}, {0, "expecting a message of 3 bytes"}});
    EXPECT_DOUBLE_EQ(times.Pauses() + times.Waits(), 0);
}

}  // namespace
}  // namespace rig::campaign
