#include "tests/support/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "tests/support/Command.h"

namespace {

void MakePipe(std::array<int, 2>& ends) {
    if (pipe2(ends.data(), O_CLOEXEC) == -1) {
        throw std::runtime_error("no pipe for the program's output");
    }
    // Room for a long log, so that the program does not wait for a test that is busy with its peer.
    fcntl(ends[1], F_SETPIPE_SZ, 1 << 20);
}

/// In the child, before the program takes over.
void Prepare(pid_t parent, const Launch& launch) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() not_eq parent) {
        _exit(126);
    }
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    signal(SIGPIPE, SIG_DFL);
    signal(SIGINT, launch.interruptIgnored ? SIG_IGN : SIG_DFL);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    for (const int fd : launch.closedDescriptors) {
        close(fd);
    }
    if (not launch.commandFolder.empty()) {
        const char* const others = getenv("PATH");
        setenv("PATH", (launch.commandFolder + ":" + (others ? others : "/usr/bin:/bin")).c_str(), 1);
    }
    if (launch.descriptorLimit not_eq 0) {
        const rlimit limit = {launch.descriptorLimit, launch.descriptorLimit};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

/// An emulator's own line on standard error, before the signal that ends the program, is not the program's.
void DropEmulatorsWord(std::string& error) {
    const std::size_t start = error.find("qemu: uncaught target signal ");
    const std::size_t end = error.find('\n', start);
    if (end not_eq std::string::npos) {
        error.erase(start, end + 1 - start);
    }
}

}  // namespace

Process::Process(const std::vector<std::string>& switches, const Launch& launch) {
    std::array<int, 2> out = {};
    std::array<int, 2> err = {};
    MakePipe(out);
    MakePipe(err);
    // Made here, as a sanitizer needs descriptors that the child may no longer have.
    Command command = HarnessCommand(switches);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        dup2(launch.output == -1 ? out[1] : launch.output, STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        Prepare(parent, launch);
        command.Run();
    }
    close(out[1]);
    close(err[1]);
    output_.fd = out[0];
    error_.fd = err[0];
    pidFd_ = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
}

Process::~Process() {
    if (not ended_) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(output_.fd);
    close(error_.fd);
    close(pidFd_);
}

bool Process::Await(const std::function<bool()>& fact, std::chrono::milliseconds patience) {
    const Clock::time_point deadline = Clock::now() + patience;
    while (not fact()) {
        pollfd waiting[] = {{output_.ended ? -1 : output_.fd, POLLIN, 0},
                            {error_.ended ? -1 : error_.fd, POLLIN, 0},
                            {ended_ ? -1 : pidFd_, POLLIN, 0}};
        if (HasEnded() or poll(waiting, 3, MillisecondsUntil(deadline)) == 0) {
            return false;
        }
        if (waiting[0].revents not_eq 0) {
            Read(output_, rest_);
            TakeWholeLines();
        }
        if (waiting[1].revents not_eq 0) {
            Read(error_, error);
            DropEmulatorsWord(error);
        }
        if (waiting[2].revents not_eq 0) {
            waitpid(pid_, &status_, 0);
            ended_ = true;
        }
    }
    return true;
}

void Process::Read(Stream& stream, std::string& text) {
    char bytes[65536];
    const ssize_t count = read(stream.fd, bytes, sizeof bytes);
    if (count > 0) {
        text.append(bytes, static_cast<std::size_t>(count));
    } else {
        stream.ended = true;
    }
}

void Process::TakeWholeLines() {
    std::size_t start = 0;
    for (std::size_t end = 0; (end = rest_.find('\n', start)) not_eq std::string::npos; start = end + 1) {
        lines.push_back(rest_.substr(start, end - start));
    }
    output.append(rest_, 0, start);
    rest_.erase(0, start);
    if (output_.ended and not rest_.empty()) {
        lines.push_back(rest_ + " (without a newline)");
        rest_.clear();
    }
}

bool Process::HasEnded() const {
    return ended_ and output_.ended and error_.ended;
}

int Process::ExitStatus() const {
    return ended_ and WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
}

int Process::EndingSignal() const {
    return ended_ and WIFSIGNALED(status_) ? WTERMSIG(status_) : -1;
}

std::string Process::Ending() const {
    if (not ended_) {
        return "still running";
    }
    return WIFEXITED(status_) ? "exit status " + std::to_string(ExitStatus())
                              : "signal " + std::to_string(EndingSignal());
}

bool Process::IsRunning() const {
    pollfd process = {pidFd_, POLLIN, 0};
    return not ended_ and poll(&process, 1, 0) == 0;
}

int Process::Copy(int descriptor) const {
    return static_cast<int>(syscall(SYS_pidfd_getfd, pidFd_, descriptor, 0));
}

std::chrono::milliseconds Process::ProcessorTime() const {
    // Fields 14 and 15, in ticks. The name, field 2, has no blanks.
    std::ifstream fields("/proc/" + std::to_string(pid_) + "/stat");
    std::string skipped;
    for (int field = 1; field < 14; ++field) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return std::chrono::milliseconds((user + system) * 1000 / sysconf(_SC_CLK_TCK));
}

std::vector<int> Process::Descriptors() const {
    std::vector<int> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(pid_) + "/fd")) {
        numbers.push_back(std::stoi(entry.path().filename()));
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}
