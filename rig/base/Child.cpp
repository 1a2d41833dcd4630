#include "rig/base/Child.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

namespace rig {
namespace {

/// Resets signals to a fresh process's: we ignore SIGPIPE and block those that we read. SIGHUP stays ignored
/// if it was.
void ResetSignals() {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGCHLD}) {
        std::signal(signal, SIG_DFL);
    }
}

/// @return whether a program of this name or path exists
bool IsProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return true;
    }
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        folder.append("/").append(name);
        if (access(folder.c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

/// @return the script that the shell runs for the command
std::string ScriptOf(const std::string& command) {
    const bool isPlain = command.find_first_of(";&|<>()`\n") == std::string::npos;
    std::string first;
    std::istringstream(command) >> first;
    const bool isCall = isPlain && !first.empty() && first.find('=') == std::string::npos && IsProgram(first);
    return isCall ? "exec " + command : "trap : INT\n" + command;
}

[[noreturn]] void Become(const Launch& launch, const std::string& script, pid_t parent) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, launch.atOurDeath);
    if (getppid() != parent) {
        _exit(126);
    }
    ResetSignals();
    for (const std::string& variable : launch.environment) {
        putenv(const_cast<char*>(variable.c_str()));
    }
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    // Both may be the same, or each other's number: never overwrite the one still to be copied.
    const int errors = fcntl(launch.errors, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(launch.output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, 0);
    execl("/bin/sh", "sh", "-c", script.c_str(), nullptr);
    _exit(127);
}

[[noreturn]] void FailToStart(const std::string& command, int error) {
    throw std::runtime_error(
        fmt::format("expected to start a process for \"{}\", found: {}", command, std::strerror(error)));
}

Ending EndingOf(int status) {
    return WIFEXITED(status) ? Ending{WEXITSTATUS(status), {}} : Ending{{}, WTERMSIG(status)};
}

}  // namespace

std::string Ending::Words() const {
    return status ? fmt::format("ended with status {}", *status)
                  : fmt::format("was ended by signal {} ({})", signal.value_or(0),
                                strsignal(signal.value_or(0)));
}

Child::Child(const Launch& launch) : mayLeaveOthers_(launch.mayLeaveOthers) {
    const std::string script = ScriptOf(launch.command);
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == -1) {
        FailToStart(launch.command, errno);
    }
    if (process_ == 0) {
        Become(launch, script, parent);
    }
    setpgid(process_, process_);  // here too, so that it is done before anyone sends a signal
    pidDescriptor_ = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)));
    if (!pidDescriptor_.IsOpen()) {
        const int error = errno;
        kill(-process_, SIGKILL);
        Reap(0);
        FailToStart(launch.command, error);
    }
}

Child::~Child() {
    if (end_ && !HasOthers()) {
        return;
    }
    const bool isKilled = kill(-process_, SIGKILL) == 0 || errno == ESRCH;
    // What runs as another user (sudo) may not be killed, and may never end: it is not waited for.
    if (!end_ && isKilled) {
        Reap(0);
    }
}

const std::optional<Ending>& Child::End() {
    if (!end_) {
        Reap(WNOHANG);
    }
    return end_;
}

void Child::Signal(int signal) {
    if (!End() || HasOthers()) {
        kill(-process_, signal);
    }
}

void Child::Reap(int flags) {
    siginfo_t info = {};
    if (waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOWAIT | flags) != 0 ||
        info.si_pid == 0) {
        return;
    }
    const bool isGood = info.si_code == CLD_EXITED && info.si_status == 0;
    if (!(mayLeaveOthers_ && isGood)) {
        kill(-process_, SIGKILL);  // while the number still belongs to it
        mayLeaveOthers_ = false;
    }
    int status = 0;
    waitpid(process_, &status, 0);
    end_ = EndingOf(status);
}

/// @return whether the command has ended and left a group that may live on
bool Child::HasOthers() const {
    return end_ && mayLeaveOthers_;
}

}  // namespace rig
