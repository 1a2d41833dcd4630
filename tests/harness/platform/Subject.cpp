#include "tests/harness/platform/Subject.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "LogClient.h"
#include "SysLogMsg.h"

namespace {

constexpr int kReportFd = 100;  // in the child, out of the way of the lowest numbers

struct Channel {
    int reader, writer;
};

/// A connection that keeps writes separate.
Channel OpenChannel() {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) not_eq 0) {
        throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    const int largestWrite = 400000;
    setsockopt(ends[1], SOL_SOCKET, SO_SNDBUF, &largestWrite, sizeof largestWrite);
    return {ends[0], ends[1]};
}

std::vector<std::string> ReadToEnd(int fd) {
    std::vector<std::string> records;
    std::vector<char> buffer(1 << 20);
    ssize_t size = 0;
    while ((size = read(fd, buffer.data(), buffer.size())) > 0) {
        records.emplace_back(buffer.data(), static_cast<std::size_t>(size));
    }
    close(fd);
    return records;
}

std::string Joined(const std::vector<std::string>& pieces) {
    std::string text;
    for (const std::string& piece : pieces) {
        text += piece;
    }
    return text;
}

[[noreturn]] void BeSubject(const std::function<void()>& code, int stdoutFd, int reportFd) {
    alarm(60);
    dup2(stdoutFd, STDOUT_FILENO);
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(reportFd, kReportFd);
    close_range(STDERR_FILENO + 1, kReportFd - 1, 0);
    close_range(kReportFd + 1, ~0U, 0);
    code();
    _exit(0);
}

}  // namespace

Outcome RunSubject(const std::function<void()>& code, int stdoutFd) {
    const Channel output = OpenChannel();
    const Channel report = OpenChannel();
    Outcome outcome;
    outcome.pid = fork();
    if (outcome.pid == 0) {
        BeSubject(code, stdoutFd < 0 ? output.writer : stdoutFd, report.writer);
    }
    close(output.writer);
    close(report.writer);
    outcome.writes = ReadToEnd(output.reader);
    outcome.output = Joined(outcome.writes);
    outcome.report = Joined(ReadToEnd(report.reader));
    waitpid(outcome.pid, &outcome.status, 0);
    return outcome;
}

void Report(const std::string& text) {
    if (write(kReportFd, text.data(), text.size()) not_eq static_cast<ssize_t>(text.size())) {
        abort();
    }
}

std::vector<std::string> OpenDescriptors() {
    std::vector<std::string> descriptors;
    for (int fd = 0; fd < kReportFd; ++fd) {
        std::error_code missing;
        const std::string path = "/proc/self/fd/" + std::to_string(fd);
        const std::filesystem::path target = std::filesystem::read_symlink(path, missing);
        if (not missing) {
            descriptors.push_back(std::to_string(fd) + " " + target.string());
        }
    }
    return descriptors;
}

void Log(unsigned int level, const std::string& text) {
    SysLogMsg().Log(level, LogClient::Instance()->ProcessName()) << text;
}

std::string ShapeOf(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character >= '0' and character <= '9'; }, '9');
    return text;
}

std::string TextOf(const std::string& line) {
    const std::string head = "9999-99-99T99:99:99.999999Z velloran ";
    const std::size_t text = line.find(' ', head.size()) + 1;
    const std::string level = line.substr(head.size(), text - head.size());
    if (ShapeOf(line.substr(0, head.size())) not_eq head or
        (ShapeOf(level) not_eq "9 " and ShapeOf(level) not_eq "99 ") or
        line.find('\n') not_eq line.size() - 1) {
        return "not a line: " + line;
    }
    return line.substr(text, line.size() - text - 1);
}
