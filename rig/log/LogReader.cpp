#include "rig/log/LogReader.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

namespace rig {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 18;
constexpr int kFollowInterval = 100;  // milliseconds: a file has no event for "grew"

volatile std::sig_atomic_t interrupted = 0;

void Interrupt(int /*signal*/) {
    interrupted = 1;
}

/// An open log; standard input is not closed.
class Input {
 public:
    explicit Input(const std::string& name) : name_(name) {
        descriptor_ = name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor_ == -1) {
            Fail();
        }
    }
    ~Input() {
        if (descriptor_ != STDIN_FILENO) {
            close(descriptor_);
        }
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    /// @return how many bytes were read; 0 at the end, or when a signal broke the wait
    std::size_t Read(std::vector<char>& chunk) const {
        const ssize_t count = read(descriptor_, chunk.data(), chunk.size());
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            Fail();
        }
        return 0;
    }

 private:
    [[noreturn]] void Fail() const {
        throw Unreadable(name_ + ": expected a log, found: " + std::strerror(errno));
    }

    std::string name_;
    int descriptor_;
};

}  // namespace

void ReadLog(const std::string& name, const TakeLine& take) {
    const Input input(name);
    std::vector<char> chunk(kChunk);
    LineCutter lines(take);
    while (const std::size_t count = input.Read(chunk)) {
        if (!lines.Add({chunk.data(), count})) {
            return;
        }
    }
    lines.End();
}

void FollowLog(const std::string& name, const TakeLine& take) {
    struct sigaction action {};
    action.sa_handler = Interrupt;  // without SA_RESTART: a read that waits must end
    sigaction(SIGINT, &action, nullptr);
    const Input input(name);
    std::vector<char> chunk(kChunk);
    LineCutter lines(take);
    while (interrupted == 0) {
        const std::size_t count = input.Read(chunk);
        if (count > 0) {
            if (!lines.Add({chunk.data(), count})) {
                return;
            }
        } else if (name == "-") {
            break;
        } else {
            poll(nullptr, 0, kFollowInterval);
        }
    }
    lines.End();
}

}  // namespace rig
