#include "tests/support/Program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "rig/base/Descriptor.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestRun(120);

/// A pipe or a terminal, read at its other end.
struct Pipe {
    explicit Pipe(bool terminal = false) {
        int ends[2] = {-1, -1};
        winsize size{};
        size.ws_col = 80;
        if (terminal) {
            EXPECT_EQ(openpty(&ends[0], &ends[1], nullptr, nullptr, &size), 0);
        } else {
            EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        }
        read = rig::Descriptor(ends[0]);
        write = rig::Descriptor(ends[1]);
    }
    rig::Descriptor read;
    rig::Descriptor write;
};

[[noreturn]] void BecomeRig(const std::vector<std::string>& arguments,
                            const ProgramSurroundings& surroundings, int output, int errors) {
    for (const std::string& variable : surroundings.environment) {
        putenv(const_cast<char*>(variable.c_str()));
    }
    if (surroundings.prepare) {
        surroundings.prepare();
    }
    Command command = RigCommand(arguments);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    command.Run();
}

/// Appends what can be read. @return whether more may come
bool ReadSome(const pollfd& ready, std::string& text) {
    if (ready.revents == 0) {
        return true;
    }
    char bytes[4096];
    const ssize_t count = read(ready.fd, bytes, sizeof bytes);
    text.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}

/// Collects both streams until both end. @return whether they did in time
bool Collect(const Pipe& output, const Pipe& errors, ProgramResult& result) {
    const auto deadline = Clock::now() + kLongestRun;
    pollfd waited[2] = {{output.read.Number(), POLLIN, 0}, {errors.read.Number(), POLLIN, 0}};
    while (waited[0].fd != -1 || waited[1].fd != -1) {
        if (Clock::now() >= deadline || poll(waited, 2, 1000) == -1) {
            return false;
        }
        if (waited[0].fd != -1 && !ReadSome(waited[0], result.output)) {
            waited[0].fd = -1;
        }
        if (waited[1].fd != -1 && !ReadSome(waited[1], result.errors)) {
            waited[1].fd = -1;
        }
    }
    return true;
}

}  // namespace

Command RigCommand(const std::vector<std::string>& arguments) {
    return CommandOf("VELLORAN_RIG", VELLORAN_RIG, "velloran-rig", arguments);
}

ProgramResult RunRig(const std::vector<std::string>& arguments, const ProgramSurroundings& surroundings) {
    Pipe output(surroundings.onTerminal);
    Pipe errors;
    const pid_t child = fork();
    if (child == 0) {
        BecomeRig(arguments, surroundings, output.write.Number(), errors.write.Number());
    }
    output.write.Close();
    errors.write.Close();
    if (surroundings.started) {
        surroundings.started(child);
    }
    ProgramResult result;
    if (!Collect(output, errors, result)) {
        ADD_FAILURE() << "velloran-rig did not end in time; its output: " << result.output;
        kill(child, SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

pid_t StartRig(const std::vector<std::string>& arguments, int output, int errors) {
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) {
            _exit(127);
        }
        BecomeRig(arguments, {}, output, errors);
    }
    return child;
}

std::size_t CountLines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}
