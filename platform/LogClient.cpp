#include "LogClient.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>

namespace {

const sockaddr_un kSyslogAddress = {AF_UNIX, "/dev/log"};

/// A descriptor that was closed at start must not be handed out for a socket: log lines would go to the peer.
void FillStandardDescriptors() {
    int fd = open("/dev/null", O_RDWR);
    while (fd >= 0 and fd <= STDERR_FILENO) {
        fd = open("/dev/null", O_RDWR);
    }
    if (fd >= 0) {
        close(fd);
    }
}

void WriteWhole(int fd, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(fd, bytes, size);
        if (written > 0) {
            bytes += written;
            size -= static_cast<std::size_t>(written);
        } else if (written == -1 and errno == EAGAIN) {
            pollfd writable = {fd, POLLOUT, 0};
            poll(&writable, 1, -1);
        } else if (written == -1 and errno not_eq EINTR) {
            return;
        }
    }
}

/// A reader of the log who leaves must not end the process by SIGPIPE, as a peer who leaves does.
void WriteToPipe(int fd, const char* bytes, std::size_t size) {
    sigset_t brokenPipe;
    sigset_t before;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    sigprocmask(SIG_BLOCK, &brokenPipe, &before);
    WriteWhole(fd, bytes, size);
    const timespec noTime = {0, 0};
    while (sigtimedwait(&brokenPipe, nullptr, &noTime) == -1 and errno == EINTR) {
    }
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

bool IsPipe(int fd) {
    struct stat output = {};
    return fstat(fd, &output) == 0 and (S_ISFIFO(output.st_mode) or S_ISSOCK(output.st_mode));
}

int Severity(unsigned int level) {
    switch (level) {
        case 1:
            return LOG_ERR;
        case 2:
            return LOG_WARNING;
        case 4:
            return LOG_NOTICE;
        case 8:
        case 16:
            return LOG_INFO;
        default:
            return LOG_DEBUG;
    }
}

iovec Piece(const char* bytes, std::size_t size) {
    return {const_cast<char*>(bytes), size};
}

}  // namespace

LogClient* LogClient::Instance() {
    static LogClient* const instance = new LogClient;
    return instance;
}

LogClient::LogClient() : pid_(getpid()) {
    FillStandardDescriptors();
    outputIsPipe_ = IsPipe(STDOUT_FILENO);
    // Unconnected: whatever becomes of the daemon, this descriptor keeps its number to the end of the
    // process.
    syslogFd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

void LogClient::ProcessName(const std::string& name) {
    name_ = name;
}

const std::string& LogClient::ProcessName() const {
    return name_;
}

void LogClient::Level(unsigned int mask) {
    mask_ = mask;
}

unsigned int LogClient::Level() const {
    return mask_;
}

void LogClient::Write(const char* line, std::size_t size, std::size_t text, unsigned int level,
                      const std::string& processName) const {
    const int savedErrno = errno;
    if (outputIsPipe_) {
        WriteToPipe(STDOUT_FILENO, line, size);
    } else {
        WriteWhole(STDOUT_FILENO, line, size);
    }
    WriteToSyslog(line + text, size - text - 1, level, processName);
    errno = savedErrno;
}

void LogClient::WriteToSyslog(const char* text, std::size_t size, unsigned int level,
                              const std::string& processName) const {
    char priority[16] = "<";
    char* end = std::to_chars(priority + 1, priority + sizeof priority, LOG_DAEMON | Severity(level)).ptr;
    *end++ = '>';

    char pid[16] = "[";
    char* pidEnd = std::to_chars(pid + 1, pid + sizeof pid, pid_).ptr;
    for (const char byte : {']', ':', ' '}) {
        *pidEnd++ = byte;
    }

    iovec pieces[] = {Piece(priority, static_cast<std::size_t>(end - priority)),
                      Piece(processName.data(), processName.size()),
                      Piece(pid, static_cast<std::size_t>(pidEnd - pid)), Piece(text, size)};
    msghdr datagram = {};
    datagram.msg_name = const_cast<sockaddr_un*>(&kSyslogAddress);
    datagram.msg_namelen = sizeof kSyslogAddress;
    datagram.msg_iov = pieces;
    datagram.msg_iovlen = sizeof pieces / sizeof *pieces;
    sendmsg(syslogFd_, &datagram, MSG_DONTWAIT | MSG_NOSIGNAL);
}
