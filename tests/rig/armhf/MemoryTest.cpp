#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>

#include "tests/support/Dvr.h"
#include "tests/support/Harness.h"
#include "tests/support/Program.h"
#include "tests/support/RunningProxy.h"
#include "tests/support/TargetsMemory.h"
#include "tests/support/World.h"

namespace {

constexpr int kUndecided = 2;  // the log's verdict
constexpr int kAtItsExit = SIGTRAP | (PTRACE_EVENT_EXIT << 8);

/// In the new process: becomes the measured program, which its parent can hold at its exit.
[[noreturn]] void BecomeTraced(Command command) {
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nowhere, STDIN_FILENO);
    dup2(nowhere, STDOUT_FILENO);
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    command.Run();
}

/// velloran-rig of the target, with memory that is never given back. What else runs is this machine's.
class RigMemory : public testing::Test {
 protected:
    void SetUp() override {
        const char* const command = std::getenv("VELLORAN_RIG");
        ASSERT_NE(nullptr, command) << "names the program to measure";
        program_ = RigCommand().words.back();
    }

    /// Runs it to its end, with this status. @return its peak, in kB
    long PeakOf(const std::vector<std::string>& arguments, int status) const {
        setenv("GLIBC_TUNABLES", kNothingGivenBack, 1);
        const Command command = RigCommand(arguments);
        const pid_t process = fork();
        if (process == 0) {
            BecomeTraced(command);
        }
        unsetenv("GLIBC_TUNABLES");
        return PeakAtTheExitOf(process, status);
    }

    /// Prints how much the program uses, and expects no more than `most`.
    static void Takes(long size, long most, const std::string& what) {
        std::cout << "memory of " << what << ": " << size << " kB" << std::endl;
        EXPECT_GT(size, 1000);
        EXPECT_LE(size, most);
    }

    long Used(pid_t process) const { return TargetsMemory(process, program_); }

    World world_;

 private:
    /// Passes signals on until the process exits.
    long PeakAtTheExitOf(pid_t process, int expected) const {
        long peak = 0;
        int status = 0;
        waitpid(process, &status, 0);
        ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACEEXIT);
        int signal = 0;
        while (ptrace(PTRACE_CONT, process, nullptr, signal) == 0 &&
               waitpid(process, &status, 0) == process && WIFSTOPPED(status)) {
            const bool isAtItsExit = status >> 8 == kAtItsExit;
            peak = isAtItsExit ? Used(process) : peak;
            signal = isAtItsExit ? 0 : WSTOPSIG(status);
        }
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == expected) << status;
        return peak;
    }

    std::string program_;
};

TEST_F(RigMemory, OfTheJudge) {
    const std::string log = VELLORAN_LOGS "/all-faults-2.0.log";
    Takes(PeakOf({"judge", log}, kUndecided), 6000, "judge on all-faults-2.0.log");
    Takes(PeakOf({"judge", "--json", "/mnt/json", "--html", "/mnt/html", log}, kUndecided), 6000,
          "judge with JSON and HTML");
}

TEST_F(RigMemory, OfACampaign) {
    Takes(PeakOf({"run", "--direct", "--bare", "--cases", "clean-1.0,clean-2.0", "--out", "/mnt/out",
                  "--velloran", VELLORAN_PROGRAM, "--dvr", VELLORAN_RIG " dvr --protocol {protocol}"},
                 0),
          6000, "run with 2 cases");
}

TEST_F(RigMemory, OfTheProxy) {
    Harness harness({"-p", "2"});
    harness.Listens();
    setenv("GLIBC_TUNABLES", kNothingGivenBack, 1);
    const RunningProxy proxy(5001, 5002);
    unsetenv("GLIBC_TUNABLES");
    Takes(Used(proxy.Id()), 5000, "proxy, idle");
    unsetenv("VELLORAN_RIG");
    Dvr dvr({"--protocol", "2", "--port", "5002"});
    while (dvr.IsRunning()) {
        harness.LogsMore(std::chrono::milliseconds(20));
    }
    dvr.EndsWithStatus(0);
    Takes(Used(proxy.Id()), 6000, "proxy after an export");
    harness.RunsOut(std::chrono::milliseconds(300));
}

}  // namespace
