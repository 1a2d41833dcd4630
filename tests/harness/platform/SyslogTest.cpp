#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>

#include "LogClient.h"
#include "tests/harness/platform/Daemon.h"
#include "tests/harness/platform/Subject.h"

namespace {

using Seconds = std::chrono::duration<double>;

/// More than a moment, less than any time-out of a stalled send; long enough for a loaded machine.
constexpr double kMoment = 10;

/// Descriptor 3 is the first free one when the logger starts.
constexpr int kSyslogFd = 3;

/// @return what reaches standard output when the named process runs `code`, which must change no descriptor
Outcome RunKeepingDescriptors(const std::function<void()>& code) {
    return RunSubject([&code] {
        LogClient::Instance()->ProcessName("velloran");
        const std::vector<std::string> before = OpenDescriptors();
        code();
        if (OpenDescriptors() not_eq before) {
            Report("descriptors changed ");
        }
    });
}

void LogLines(int count) {
    for (int number = 1; number <= count; ++number) {
        Log(16, "line " + std::to_string(number));
    }
}

void ExpectLines(const Outcome& outcome, int count) {
    ASSERT_EQ(outcome.writes.size(), static_cast<std::size_t>(count));
    for (int number = 1; number <= count; ++number) {
        ASSERT_EQ(TextOf(outcome.writes[static_cast<std::size_t>(number) - 1]),
                  "line " + std::to_string(number));
    }
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.report, "");
}

TEST(Syslog, GetsPriorityNamePidAndText) {
    Daemon daemon;
    const Outcome outcome = RunKeepingDescriptors([] { Log(16, "velloran:212 Sending DONE"); });
    EXPECT_EQ(daemon.Take(), std::vector<std::string>{"<30>velloran[" + std::to_string(outcome.pid) +
                                                      "]: velloran:212 Sending DONE"});
    EXPECT_EQ(TextOf(outcome.output), "velloran:212 Sending DONE");
}

TEST(Syslog, GetsTheSeverityOfTheLevel) {
    // Facility daemon is 3 * 8; err 3, warning 4, notice 5, info 6, debug 7.
    const std::pair<unsigned int, std::string> priorities[] = {
        {1, "<27>"}, {2, "<28>"}, {4, "<29>"}, {8, "<30>"}, {16, "<30>"}, {32, "<31>"}, {64, "<31>"}};
    Daemon daemon;
    const Outcome outcome = RunKeepingDescriptors([&priorities] {
        for (const auto& [level, priority] : priorities) {
            Log(level, "text");
        }
    });
    const std::vector<std::string> datagrams = daemon.Take();
    ASSERT_EQ(datagrams.size(), std::size(priorities));
    for (std::size_t index = 0; index < datagrams.size(); ++index) {
        const std::string rest = "velloran[" + std::to_string(outcome.pid) + "]: text";
        EXPECT_EQ(datagrams[index], priorities[index].second + rest) << "level " << priorities[index].first;
    }
}

TEST(Syslog, GetsTheTextEscapedAndOneDatagramALine) {
    Daemon daemon;
    const Outcome outcome = RunKeepingDescriptors([] { Log(16, std::string("a\nb\0c\\", 6)); });
    EXPECT_EQ(daemon.Take(),
              std::vector<std::string>{"<30>velloran[" + std::to_string(outcome.pid) + "]: a\\nb\\x00c\\\\"});
}

TEST(Syslog, GetsLongTextsWhole) {
    Daemon daemon;
    const std::string text(100000, 'x');
    const Outcome outcome = RunKeepingDescriptors([&text] { Log(16, text); });
    EXPECT_EQ(daemon.Take(),
              std::vector<std::string>{"<30>velloran[" + std::to_string(outcome.pid) + "]: " + text});
}

TEST(Syslog, TooSmallForALineCostsNoLineOnStandardOutput) {
    Daemon daemon;
    const std::string text(300000, 'x');
    const Outcome outcome = RunKeepingDescriptors([&text] { Log(16, text); });
    EXPECT_EQ(TextOf(outcome.output), text);
}

TEST(Syslog, SocketIsOpenedOnceByTheFirstUseOfTheLogger) {
    Daemon daemon;
    const Outcome outcome = RunSubject([] {
        Report(std::to_string(OpenDescriptors().size()));
        LogClient::Instance();
        const std::vector<std::string> opened = OpenDescriptors();
        Report("," + std::to_string(opened.size()));
        LogClient::Instance()->ProcessName("velloran");
        LogClient::Instance()->Level(127);
        LogLines(5);
        Report(OpenDescriptors() == opened ? ",unchanged" : ",changed");
    });
    EXPECT_EQ(outcome.report, "3,4,unchanged");
    EXPECT_EQ(daemon.Take().size(), 5U);
}

TEST(Syslog, SocketIsAnUnconnectedDatagramSocketWithTheLowestNumber) {
    Daemon daemon;
    const Outcome outcome = RunKeepingDescriptors([] {
        LogLines(1);
        int type = 0;
        socklen_t length = sizeof type;
        getsockopt(kSyslogFd, SOL_SOCKET, SO_TYPE, &type, &length);
        Report(type == SOCK_DGRAM ? "datagram" : "other type");
        sockaddr_un peer = {};
        length = sizeof peer;
        const int result = getpeername(kSyslogFd, reinterpret_cast<sockaddr*>(&peer), &length);
        Report(result == -1 and errno == ENOTCONN ? ", unconnected" : ", connected");
    });
    EXPECT_EQ(outcome.report, "datagram, unconnected");
}

TEST(Syslog, MissingFromTheStartChangesNothingElse) {
    unlink("/dev/log");
    ExpectLines(RunKeepingDescriptors([] { LogLines(100); }), 100);
}

TEST(Syslog, GetsTheLinesFromWhenItStarts) {
    unlink("/dev/log");
    const Outcome outcome = RunKeepingDescriptors([] {
        LogLines(1);
        Daemon late;
        LogLines(3);
        Report(std::to_string(late.Take().size()));
    });
    EXPECT_EQ(outcome.writes.size(), 4U);
    EXPECT_EQ(outcome.report, "3");
}

TEST(Syslog, GetsTheLinesAfterItsRestart) {
    const Outcome outcome = RunKeepingDescriptors([] {
        auto daemon = std::make_unique<Daemon>();
        LogLines(1);
        Report(std::to_string(daemon->Take().size()));
        daemon.reset();
        LogLines(2);
        daemon = std::make_unique<Daemon>();
        LogLines(3);
        Report("," + std::to_string(daemon->Take().size()));
    });
    EXPECT_EQ(outcome.writes.size(), 6U);
    EXPECT_EQ(outcome.report, "1,3");
}

TEST(Syslog, KilledWithItsSocketFileLeftChangesNothingElse) {
    static_cast<void>(Daemon());
    ExpectLines(RunKeepingDescriptors([] { LogLines(100); }), 100);
}

TEST(Syslog, ThatHangsCostsNoLineOnStandardOutputAndNoTime) {
    const Daemon hanging;
    const auto start = std::chrono::steady_clock::now();
    ExpectLines(RunKeepingDescriptors([] { LogLines(3000); }), 3000);
    EXPECT_LT(Seconds(std::chrono::steady_clock::now() - start).count(), kMoment);
}

TEST(Syslog, GetsTheLinesAfterItStopsHanging) {
    const Outcome outcome = RunKeepingDescriptors([] {
        Daemon daemon;
        LogLines(3000);
        const std::size_t kept = daemon.Take().size();
        Report(kept > 0 and kept < 3000 ? "some" : "all or none");
        LogLines(3);
        Report("," + std::to_string(daemon.Take().size()));
    });
    EXPECT_EQ(outcome.writes.size(), 3003U);
    EXPECT_EQ(outcome.report, "some,3");
}

TEST(Syslog, GetsWhatStandardOutputDoesNotTake) {
    Daemon daemon;
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    RunSubject([] { LogLines(2); }, full);
    close(full);
    EXPECT_EQ(daemon.Take().size(), 2U);
}

}  // namespace
