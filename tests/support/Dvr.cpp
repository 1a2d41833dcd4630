#include "tests/support/Dvr.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <sstream>

#include "tests/support/LogLine.h"
#include "tests/support/Program.h"
#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

// On the world's disk, but not where the harness keeps its files.
constexpr const char* kOutput = "/mnt/dvr.output";
constexpr const char* kErrors = "/mnt/dvr.errors";

void Redirect(int descriptor, const char* path) {
    dup2(open(path, O_CREAT | O_TRUNC | O_RDWR | O_CLOEXEC, 0644), descriptor);
}

[[noreturn]] void Become(const std::vector<std::string>& words, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) {
        RigCommand(words).Run();
    }
    _exit(127);
}

/// A line without the seconds since the start that it begins with.
std::string WithoutTime(const std::string& line) {
    const std::size_t time = line.find_first_not_of(' ');
    const std::size_t text = line.find(' ', time == std::string::npos ? 0 : time);
    return text == std::string::npos ? line : line.substr(text + 1);
}

/// Whether a line of the transcript ends with "  [NAME, NAME]" and this is one of the names.
bool HasMark(const std::string& line, const std::string& defect) {
    const std::size_t marks = line.rfind("  [");
    if (marks == std::string::npos or line.back() not_eq ']') {
        return false;
    }
    const std::string names = ", " + line.substr(marks + 3, line.size() - marks - 4) + ", ";
    return names.find(", " + defect + ", ") not_eq std::string::npos;
}

}  // namespace

Dvr::Dvr(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"dvr"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        Redirect(STDOUT_FILENO, kOutput);
        Redirect(STDERR_FILENO, kErrors);
        Become(words, parent);
    }
}

/// A failed test's report ends with what the DVR did.
Dvr::~Dvr() {
    if (pid_ not_eq -1) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    if (testing::Test::HasFailure()) {
        std::cerr << "-- the DVR's transcript:\n"
                  << ReadFile(kOutput) << "-- its standard error:\n"
                  << ReadFile(kErrors);
    }
}

bool Dvr::IsRunning() const {
    siginfo_t ended = {};
    return waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 and
           ended.si_pid == 0;
}

void Dvr::GetsSignal(int signal) const {
    kill(pid_, signal);
}

int Dvr::Ends(Here here) {
    pollfd process = {static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)), POLLIN, 0};
    const int ended = poll(&process, 1, MillisecondsUntil(Clock::now() + kPatience));
    close(process.fd);
    if (ended not_eq 1) {
        FailAt(here, "the DVR does not end");
    }
    int found = 0;
    waitpid(pid_, &found, 0);
    pid_ = -1;
    if (not WIFEXITED(found)) {
        FailAt(here, "expected the DVR to end by itself, found a signal");
    }
    return WEXITSTATUS(found);
}

void Dvr::EndsWithStatus(int status, const std::string& why, Here here) {
    const int found = Ends(here);
    const std::string errors = StandardError();
    const std::string expected = status == 0 ? "" : "velloran-rig dvr: " + why;
    if (found not_eq status) {
        FailAt(here, "expected the DVR's exit status " + std::to_string(status) + ", found " +
                         std::to_string(found));
    } else if (not StartsWith(errors, expected) or
               std::count(errors.begin(), errors.end(), '\n') not_eq (status == 0 ? 0 : 1)) {
        FailAt(here, "expected one line of the DVR: \"" + expected + "...\"\nbut found \"" + errors + "\"");
    }
}

std::string Dvr::StandardError() const {
    return ReadFile(kErrors);
}

std::vector<std::string> Dvr::Transcript() const {
    std::vector<std::string> lines;
    std::istringstream output(ReadFile(kOutput));
    for (std::string line; std::getline(output, line);) {
        lines.push_back(WithoutTime(line));
    }
    return lines;
}

std::vector<std::string> Dvr::MarkedWith(const std::string& defect) const {
    std::vector<std::string> names;
    for (const std::string& line : Transcript()) {
        if (StartsWith(line, "-> ") and HasMark(line, defect)) {
            names.push_back(line.substr(3, line.find(' ', 3) - 3));
        }
    }
    return names;
}
