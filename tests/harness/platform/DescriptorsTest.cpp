#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>

#include "LogClient.h"
#include "tests/harness/platform/Subject.h"

namespace {

/// Which of the standard descriptors are closed when the process starts.
class ClosedStandardDescriptors : public testing::TestWithParam<int> {
 protected:
    static bool IsClosed(int fd) { return (GetParam() & (1 << fd)) not_eq 0; }

    static void CloseThem() {
        for (int fd = 0; fd <= 2; ++fd) {
            if (IsClosed(fd)) {
                close(fd);
            }
        }
    }
};

TEST_P(ClosedStandardDescriptors, AreFilledWithDevNullSoThatNoSocketTakesTheirPlace) {
    const Outcome outcome = RunSubject([] {
        const std::vector<std::string> before = OpenDescriptors();
        CloseThem();
        LogClient::Instance();
        const std::vector<std::string> after = OpenDescriptors();
        Report(after.size() == 4 ? "four" : "not four");
        for (int fd = 0; fd <= 2; ++fd) {
            const auto index = static_cast<std::size_t>(fd);
            const std::string expected = IsClosed(fd) ? std::to_string(fd) + " /dev/null" : before[index];
            Report(after[index] == expected ? ", right" : ", " + after[index]);
        }
        Report(after[3].rfind("3 socket:", 0) == 0 ? ", socket" : ", no socket");
    });
    EXPECT_EQ(outcome.report, "four, right, right, right, socket");
}

TEST_P(ClosedStandardDescriptors, CanBeReadAndWrittenAfterwards) {
    const Outcome outcome = RunSubject([] {
        CloseThem();
        LogClient::Instance();
        char byte = 0;
        Report(IsClosed(0) and read(0, &byte, 1) not_eq 0 ? "cannot read 0;" : "0;");
        Report(IsClosed(1) and write(1, "x", 1) not_eq 1 ? "cannot write 1;" : "1;");
        Report(IsClosed(2) and write(2, "x", 1) not_eq 1 ? "cannot write 2;" : "2;");
    });
    EXPECT_EQ(outcome.report, "0;1;2;");
    EXPECT_EQ(outcome.status, 0);
}

TEST_P(ClosedStandardDescriptors, LeaveLogLinesToStandardOutputAlone) {
    const Outcome outcome = RunSubject([] {
        CloseThem();
        LogClient::Instance()->ProcessName("velloran");
        int ends[2];
        if (pipe2(ends, O_NONBLOCK) not_eq 0) {
            Report("no pipe");
        }
        Log(16, "text");
        char byte = 0;
        Report(read(ends[0], &byte, 1) == -1 and errno == EAGAIN ? "nothing"
                                                                 : "a log line in another descriptor");
    });
    EXPECT_EQ(outcome.report, "nothing");
    EXPECT_EQ(outcome.writes.size(), IsClosed(1) ? 0U : 1U);
}

std::string NameOfClosed(const testing::TestParamInfo<int>& closed) {
    const char* const names[] = {"None", "In", "Out", "InOut", "Err", "InErr", "OutErr", "All"};
    return names[closed.param];
}

INSTANTIATE_TEST_SUITE_P(Every, ClosedStandardDescriptors, testing::Range(0, 8), NameOfClosed);

TEST(Errno, IsKeptByALogStatement) {
    const Outcome outcome = RunSubject([] {
        unlink("/dev/log");
        LogClient::Instance();
        for (const int error : {0, EINTR, 98}) {
            errno = error;
            Log(16, "text");
            Report(std::to_string(errno) + " ");
        }
    });
    EXPECT_EQ(outcome.report, "0 4 98 ");
}

TEST(Errno, IsKeptWhenStandardOutputFails) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const Outcome outcome = RunSubject(
        [] {
            LogClient::Instance();
            errno = 98;
            Log(16, "text");
            Report(std::to_string(errno));
        },
        full);
    close(full);
    EXPECT_EQ(outcome.report, "98");
}

int handlerRan[2];  // a pipe with a byte for each signal handled

/// Interrupts a process so often that it is hit during a write that has not written anything yet.
void Interrupt(pid_t writer) {
    for (int time = 0; time < 100; ++time) {
        char byte = 0;
        kill(writer, SIGUSR1);
        if (read(handlerRan[0], &byte, 1) not_eq 1) {
            Report("no signal was handled");
        }
    }
}

void WaitUntilFull(int pipe) {
    int held = 0;
    while (held < fcntl(pipe, F_GETPIPE_SZ)) {
        ioctl(pipe, FIONREAD, &held);
    }
}

/// Starts a process that runs `code` with a pipe as its standard output. @return its id
pid_t StartWriter(const std::array<int, 2>& pipe, const std::function<void()>& code) {
    const pid_t writer = fork();
    if (writer == 0) {
        alarm(60);
        dup2(pipe[1], STDOUT_FILENO);
        close(pipe[1]);
        LogClient::Instance()->ProcessName("velloran");
        code();
        _exit(0);
    }
    close(pipe[1]);
    return writer;
}

/// Runs `code` in a process whose standard output is a pipe. Nobody reads it until it is full and the process
/// has been interrupted.
/// @return what came out of the pipe
std::string OutputThroughFullPipe(int pipeFlags, const std::function<void()>& code) {
    const Outcome outcome = RunSubject([pipeFlags, &code] {
        std::array<int, 2> ends{};
        if (pipe(handlerRan) not_eq 0 or pipe2(ends.data(), pipeFlags) not_eq 0) {
            Report("no pipe");
        }
        struct sigaction action = {};
        action.sa_handler = [](int) { [[maybe_unused]] const ssize_t size = write(handlerRan[1], "x", 1); };
        sigaction(SIGUSR1, &action, nullptr);
        const pid_t writer = StartWriter(ends, code);
        WaitUntilFull(ends[0]);
        Interrupt(writer);
        fcntl(ends[0], F_SETFL, 0);
        std::string text;
        std::array<char, 1000> piece{};
        ssize_t size = 0;
        while ((size = read(ends[0], piece.data(), piece.size())) > 0) {
            text.append(piece.data(), static_cast<std::size_t>(size));
        }
        Report(text);
    });
    return outcome.report;
}

TEST(LineLongerThanAPipe, IsWholeWhenItsWriteIsInterrupted) {
    const std::string text(300000, 'x');
    EXPECT_EQ(TextOf(OutputThroughFullPipe(0, [&text] { Log(16, text); })), text);
}

TEST(LineLongerThanAPipe, IsWholeOnANonBlockingStandardOutput) {
    const std::string text(300000, 'x');
    EXPECT_EQ(TextOf(OutputThroughFullPipe(O_NONBLOCK, [&text] { Log(16, text); })), text);
}

}  // namespace
