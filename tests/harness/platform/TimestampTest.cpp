#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>

#include "LogClient.h"
#include "tests/harness/platform/Subject.h"
#include "tests/support/TimeNow.h"

namespace {

std::optional<timespec> instant;  // the clock stands still there; it runs if there is none

}  // namespace

extern "C" {
int RealClock(clockid_t clock, timespec* now) __asm__("__real_" CLOCK);
int WrappedClock(clockid_t clock, timespec* now) __asm__("__wrap_" CLOCK);

int WrappedClock(clockid_t clock, timespec* now) {
    if (instant and clock == CLOCK_REALTIME) {
        *now = *instant;
        return 0;
    }
    return RealClock(clock, now);
}
}

namespace {

constexpr time_t kDay = 86400;

/// The C library's rendering of an instant, 27 characters.
std::string Expected(const timespec& time) {
    tm utc = {};
    gmtime_r(&time.tv_sec, &utc);
    char seconds[32];
    strftime(seconds, sizeof seconds, "%Y-%m-%dT%H:%M:%S", &utc);
    char stamp[64];
    snprintf(stamp, sizeof stamp, "%s.%06ldZ", seconds, time.tv_nsec / 1000);
    return stamp;
}

/// @return the time stamps of lines that are logged at these instants
std::vector<std::string> Stamps(const std::vector<timespec>& instants) {
    const Outcome outcome = RunSubject([&instants] {
        LogClient::Instance()->ProcessName("velloran");
        for (const timespec& time : instants) {
            instant = time;
            Log(16, "");
        }
    });
    std::vector<std::string> stamps;
    for (const std::string& line : outcome.writes) {
        stamps.push_back(line.substr(0, line.find(' ')));
    }
    return stamps;
}

void ExpectStampsOf(const std::vector<timespec>& instants) {
    const std::vector<std::string> stamps = Stamps(instants);
    ASSERT_EQ(stamps.size(), instants.size());
    for (std::size_t index = 0; index < stamps.size(); ++index) {
        ASSERT_EQ(stamps[index], Expected(instants[index])) << instants[index].tv_sec;
    }
}

TEST(Timestamp, IsTheTimeInUtcWithMicroseconds) {
    EXPECT_EQ(Stamps({{1795183387, 123456000}}), std::vector<std::string>{"2026-11-20T14:03:07.123456Z"});
}

TEST(Timestamp, IsRightOnTheDaysThatCalendarsGetWrong) {
    const std::pair<time_t, std::string> days[] = {
        {0, "1970-01-01T00:00:00.000000Z"},          {951782399, "2000-02-28T23:59:59.000000Z"},
        {951782400, "2000-02-29T00:00:00.000000Z"},  {951868800, "2000-03-01T00:00:00.000000Z"},
        {1709164800, "2024-02-29T00:00:00.000000Z"}, {1735689599, "2024-12-31T23:59:59.000000Z"},
        {2147483647, "2038-01-19T03:14:07.000000Z"}, {2147483648, "2038-01-19T03:14:08.000000Z"},
        {4107542399, "2100-02-28T23:59:59.000000Z"}, {4107542400, "2100-03-01T00:00:00.000000Z"},
        {4294967296, "2106-02-07T06:28:16.000000Z"}};
    std::vector<timespec> instants;
    std::vector<std::string> stamps;
    for (const auto& [second, stamp] : days) {
        instants.push_back({second, 0});
        stamps.push_back(stamp);
    }
    EXPECT_EQ(Stamps(instants), stamps);
}

TEST(Timestamp, IsWhatTheCLibrarySaysOnEveryDayUpTo2200) {
    std::vector<timespec> instants;
    for (long day = 0; day < 84006; ++day) {
        instants.push_back({day * kDay + day * 7919 % kDay, day % 1000 * 1000003});
    }
    ExpectStampsOf(instants);
}

TEST(Timestamp, IsWhatTheCLibrarySaysInEverySecondOfADay) {
    std::vector<timespec> instants;
    for (time_t second = 0; second < kDay; ++second) {
        instants.push_back({20777 * kDay + second, 0});
    }
    ExpectStampsOf(instants);
}

TEST(Timestamp, DropsWhatIsLessThanAMicrosecond) {
    EXPECT_EQ(Stamps({{1, 999}, {1, 1000}, {1, 999999999}}),
              (std::vector<std::string>{"1970-01-01T00:00:01.000000Z", "1970-01-01T00:00:01.000001Z",
                                        "1970-01-01T00:00:01.999999Z"}));
}

TEST(Timestamp, IsUtcWhateverTheTimeZone) {
    setenv("TZ", "Asia/Kolkata", 1);
    tzset();
    EXPECT_EQ(Stamps({{1795183387, 0}}), std::vector<std::string>{"2026-11-20T14:03:07.000000Z"});
    unsetenv("TZ");
    tzset();
}

TEST(Timestamp, IsTheTimeNow) {
    const time_t before = TimeNow();
    const Outcome outcome = RunSubject([] { Log(16, ""); });
    const time_t after = TimeNow();
    const std::string stamp = outcome.output.substr(0, 19);
    EXPECT_GE(stamp, Expected({before, 0}).substr(0, 19));
    EXPECT_LE(stamp, Expected({after, 0}).substr(0, 19));
}

}  // namespace
