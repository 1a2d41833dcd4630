#include <gtest/gtest.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>

#include "LogClient.h"
#include "SysLogMsg.h"
#include "tests/harness/platform/Subject.h"

namespace {

constexpr int kEnough = 500;

volatile sig_atomic_t handled = 0;

/// Interrupts the process in 100 microseconds.
void StartTimer() {
    const itimerval soon = {{0, 0}, {0, 100}};
    setitimer(ITIMER_REAL, &soon, nullptr);
}

/// Each signal restarts it, as a timer faster than the handler would leave the code no time at all.
void HandleAlarm(int) {
    SysLogMsg().Log(1, LogClient::Instance()->ProcessName()) << "from the handler";
    handled = handled + 1;
    if (handled < kEnough) {
        StartTimer();
    }
}

/// Runs `code` again and again until the handler has logged often enough.
Outcome RunInterrupted(const std::function<void()>& code) {
    return RunSubject([&code] {
        LogClient::Instance()->ProcessName("velloran");
        struct sigaction action = {};
        action.sa_handler = HandleAlarm;
        action.sa_flags = SA_RESTART;
        sigaction(SIGALRM, &action, nullptr);
        StartTimer();
        while (handled < kEnough) {
            code();
        }
        Report(std::to_string(handled));
    });
}

std::size_t CountOf(const std::string& text, const std::vector<std::string>& lines) {
    const auto is = [&text](const std::string& line) { return TextOf(line) == text; };
    return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), is));
}

TEST(SignalHandler, LogsWholeLinesInTheMiddleOfALogStatement) {
    const std::string text(3000, 'x');
    const Outcome outcome = RunInterrupted([&text] { Log(16, text); });
    EXPECT_EQ(outcome.status, 0);
    const std::size_t fromHandler = CountOf("from the handler", outcome.writes);
    EXPECT_EQ(std::to_string(fromHandler), outcome.report);
    EXPECT_EQ(fromHandler + CountOf(text, outcome.writes), outcome.writes.size());
}

TEST(SignalHandler, LogsInTheMiddleOfAMemoryRequest) {
    const Outcome outcome = RunInterrupted([] {
        for (std::size_t size = 1; size < 100000; size *= 3) {
            delete[] new char[size];
        }
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(std::to_string(CountOf("from the handler", outcome.writes)), outcome.report);
    EXPECT_EQ(CountOf("from the handler", outcome.writes), outcome.writes.size());
}

TEST(SignalHandler, LogsInTheMiddleOfATimeConversion) {
    const Outcome outcome = RunInterrupted([] {
        const time_t now = 0;
        tm local = {};
        localtime_r(&now, &local);
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(std::to_string(CountOf("from the handler", outcome.writes)), outcome.report);
}

TEST(SignalHandler, LeavesTheErrnoOfTheInterruptedCode) {
    const Outcome outcome = RunInterrupted([] {
        errno = 98;
        for (int pause = 0; pause < 1000; ++pause) {
            if (errno not_eq 98) {
                Report("errno changed");
            }
        }
    });
    EXPECT_EQ(std::to_string(outcome.writes.size()), outcome.report);
}

}  // namespace
