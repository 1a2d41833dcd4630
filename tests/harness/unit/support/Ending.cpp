#include "tests/harness/unit/support/Ending.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "tests/harness/unit/support/Listener.h"
#include "tests/harness/unit/support/Socket.h"

namespace {

constexpr unsigned int kTimeLimit = 30;  // seconds

/// An exception that escapes the code ends the process, as in a program that catches none.
void RunWithoutCatching(const std::function<void()>& code) noexcept {
    code();
}

[[noreturn]] void RunChild(const std::function<void()>& code, int output) {
    dup2(output, STDERR_FILENO);
    close(output);
    alarm(kTimeLimit);
    EchoJournal();
    std::atexit([] { fputs(kExitHandlersRan, stderr); });
    RunWithoutCatching(code);
    fputs("came back\n", stderr);
    _exit(0);
}

std::string ReadAll(int input) {
    std::string all;
    char bytes[4096];
    for (ssize_t count = read(input, bytes, sizeof bytes); count > 0;
         count = read(input, bytes, sizeof bytes)) {
        all.append(bytes, static_cast<std::size_t>(count));
    }
    return all;
}

/// Removes program, file and line from the message of a failed assertion:
/// PROGRAM: FILE:LINE: FUNCTION: Assertion `EXPRESSION' failed.
std::string Simplified(const std::string& line) {
    const std::string middle = ": Assertion `";
    const std::string end = "' failed.";
    const std::size_t function = line.find(": ", line.find(": ") + 1) + 2;
    const std::size_t functionEnd = line.rfind(middle);
    if (functionEnd == std::string::npos or functionEnd <= function or line.size() < end.size() or
        line.compare(line.size() - end.size(), end.size(), end) not_eq 0) {
        return line;
    }
    const std::size_t expression = functionEnd + middle.size();
    return AssertionFailed(line.substr(function, functionEnd - function),
                           line.substr(expression, line.size() - end.size() - expression))
        .text;
}

/// What an emulator says about a signal that ends the process is not the process's output.
bool IsEmulators(const std::string& line) {
    return line.rfind("qemu: uncaught target signal ", 0) == 0;
}

std::string SimplifiedLines(const std::string& output) {
    std::istringstream lines(output);
    std::string simplified;
    for (std::string line; std::getline(lines, line);) {
        simplified += IsEmulators(line) ? "" : Simplified(line) + "\n";
    }
    return simplified;
}

std::string Described(int status) {
    if (WIFSIGNALED(status)) {
        return "ended by signal " + std::to_string(WTERMSIG(status)) + "\n";
    }
    return "ended with status " + std::to_string(WEXITSTATUS(status)) + "\n";
}

}  // namespace

std::string RunToItsEnd(const std::function<void()>& code) {
    int ends[2];
    if (pipe(ends) == -1) {
        throw std::runtime_error("pipe failed");
    }
    fflush(nullptr);
    const pid_t child = fork();
    if (child == -1) {
        throw std::runtime_error("fork failed");
    }
    if (child == 0) {
        close(ends[0]);
        RunChild(code, ends[1]);
    }
    close(ends[1]);
    const std::string output = ReadAll(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    ResetSocket();
    ResetListener();
    return SimplifiedLines(output) + Described(status);
}
