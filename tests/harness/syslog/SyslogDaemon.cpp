#include "tests/harness/syslog/SyslogDaemon.h"

#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <ostream>

#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

const char* const kOutput = "/var/log/messages";
const char* const kRsyslogConfiguration = "/var/log/rsyslog.conf";

const sockaddr_un kAddress = {AF_UNIX, "/dev/log"};

const sockaddr* Generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

[[noreturn]] void Run(pid_t parent, std::vector<std::string> words) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() not_eq parent) {
        _exit(126);
    }
    close_range(STDERR_FILENO + 1, ~0U, 0);
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    // Daemons are in /usr/sbin, which is not in every user's path.
    setenv("PATH", "/usr/sbin:/usr/bin:/sbin:/bin", 1);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

/// "Nov 21 01:26:51 [HOST] daemon.warn velloran[77]: TEXT": the part after the facility, with one name for
/// the severity that has two. Empty if the line is of another facility.
std::string WithoutHead(const std::string& line) {
    const std::string facility = " daemon.";
    const std::size_t head = line.find(facility);
    if (head == std::string::npos) {
        return "";
    }
    const std::string rest = line.substr(head + facility.size());
    const std::string abbreviated = "warn ";
    return rest.rfind(abbreviated, 0) == 0 ? "warning " + rest.substr(abbreviated.size()) : rest;
}

bool Holds(const std::string& path, const std::string& text) {
    std::ifstream file(path);
    std::string line;
    while (std::getline(file, line)) {
        if (line.find(text) not_eq std::string::npos) {
            return true;
        }
    }
    return false;
}

/// Whether someone serves /dev/log.
bool IsServed() {
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool served = connect(fd, Generic(kAddress), sizeof kAddress) == 0;
    close(fd);
    return served;
}

}  // namespace

SyslogDaemon::Kind SyslogDaemon::Busybox() {
    return {"busybox", {"busybox", "syslogd", "-n"}, "busybox"};
}

SyslogDaemon::Kind SyslogDaemon::Rsyslog() {
    return {"rsyslog", {"rsyslogd", "-n", "-iNONE", "-f", kRsyslogConfiguration}, "rsyslog"};
}

SyslogDaemon::SyslogDaemon(const Kind& kind) : kind_(kind) {
    MountEmpty("/run");
    MountEmpty("/var/log");
    // Debian's own configuration writes the same file, but without severities.
    std::ofstream(kRsyslogConfiguration)
        << "module(load=\"imuxsock\")\n"
           "template(name=\"all\" type=\"string\" string=\"%timegenerated% "
           "%syslogfacility-text%.%syslogseverity-text% %syslogtag%%msg%\\n\")\n"
           "*.* action(type=\"omfile\" file=\""
        << kOutput << "\" template=\"all\")\n";
}

SyslogDaemon::~SyslogDaemon() {
    if (pid_ not_eq -1) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    umount2("/var/log", MNT_DETACH);
    umount2("/run", MNT_DETACH);
}

void SyslogDaemon::Starts(Here here) {
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        Run(parent, kind_.command);
    }
    int status = 0;
    pid_t ended = 0;
    const bool takes = Until([&] {
        ended = waitpid(pid_, &status, WNOHANG);
        return ended not_eq 0 or IsServed();
    });
    if (ended not_eq 0) {
        pid_ = -1;
        FailAt(here, kind_.command[0] + " ends at once, wait status " + std::to_string(status) +
                         "; it is in the package " + kind_.package);
    } else if (not takes) {
        FailAt(here, kind_.command[0] + " does not listen at /dev/log");
    }
    HasCaughtUp(here);
}

/// Sends a line of another facility after all the others; when it has been written, so have they.
void SyslogDaemon::HasCaughtUp(Here here) {
    const std::string text = "mark " + std::to_string(++marks_) + ".";
    const std::string datagram = "<13>test: " + text;
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto send = [&] {
        return sendto(fd, datagram.data(), datagram.size(), MSG_DONTWAIT, Generic(kAddress),
                      sizeof kAddress) >= 0;
    };
    const bool written = Until(send) and Until([&] { return Holds(kOutput, text); });
    close(fd);
    if (not written) {
        FailAt(here, kind_.command[0] + " does not write what comes to /dev/log");
    }
}

std::vector<std::string> SyslogDaemon::Lines() const {
    std::vector<std::string> lines;
    std::ifstream file(kOutput);
    std::string line;
    while (std::getline(file, line)) {
        const std::string text = WithoutHead(line);
        if (not text.empty()) {
            lines.push_back(text);
        }
    }
    return lines;
}

std::ostream& operator<<(std::ostream& out, const SyslogDaemon::Kind& kind) {
    return out << kind.name;
}
