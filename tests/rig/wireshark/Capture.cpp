#include "tests/rig/wireshark/Capture.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/Until.h"
#include "tests/support/World.h"

namespace {

constexpr const char* kDumpcapErrors = "/mnt/dumpcap.errors";
constexpr const char* kMark = "this is the end of the capture";

[[noreturn]] void Become(const std::string& path, pid_t parent) {
    dup2(open("/dev/null", O_RDWR | O_CLOEXEC), STDIN_FILENO);
    dup2(open(kDumpcapErrors, O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0644), STDERR_FILENO);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() == parent) {
        execlp("dumpcap", "dumpcap", "-i", "lo", "-f", "port 5001", "-w", path.c_str(), nullptr);
        dprintf(STDERR_FILENO, "no dumpcap; install Debian's wireshark-common\n");
    }
    _exit(127);
}

bool Contains(const std::string& path, const std::string& text) {
    return FileExists(path) and ReadFile(path).find(text) not_eq std::string::npos;
}

/// The capture sees what we send, so once this is in the file, everything before it is there too.
void SendMark() {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(5001);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const std::string mark = kMark;
    sendto(fd, mark.data(), mark.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(fd);
}

}  // namespace

Capture::Capture(const std::string& path, Here here) : path_(path) {
    unlink(kDumpcapErrors);
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        Become(path, parent);
    }
    // It names the file once the device is open and filtered.
    if (not Until([] { return Contains(kDumpcapErrors, "File: "); })) {
        FailAt(here, "dumpcap does not start: " + ReadFile(kDumpcapErrors));
    }
}

Capture::~Capture() {
    if (pid_ not_eq -1) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

void Capture::Stop(Here here) {
    SendMark();
    if (not Until([this] { return Contains(path_, kMark); })) {
        FailAt(here, "the last packets do not come into the capture");
    }
    kill(pid_, SIGINT);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    if (not WIFEXITED(status) or WEXITSTATUS(status) not_eq 0) {
        FailAt(here, "dumpcap failed: " + ReadFile(kDumpcapErrors));
    }
}
