#include "rig/log/LogReader.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <vector>

namespace rig::log {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 18;
constexpr int kFollowInterval = 100;  // milliseconds: no event tells that a file grew
constexpr int kLastWords = 500;       // milliseconds in which a harness that was also interrupted says so

volatile std::sig_atomic_t interrupts = 0;

void CountInterrupt(int /*signal*/) {
    interrupts = interrupts + 1;
}

void CountInterrupts() {
    struct sigaction action = {};
    action.sa_handler = CountInterrupt;  // without SA_RESTART: a waiting read must end
    sigaction(SIGINT, &action, nullptr);
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

    bool IsStandardInput() const { return descriptor_ == STDIN_FILENO; }

    /// @return whether a read would return at once
    bool HasMore() const {
        pollfd waited = {descriptor_, POLLIN, 0};
        return poll(&waited, 1, 0) == 1;
    }

    /// @return how many bytes were read; 0 at the end; nothing when a signal interrupted the wait
    std::optional<std::size_t> Read(std::vector<char>& chunk) const {
        const ssize_t count = read(descriptor_, chunk.data(), chunk.size());
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR) {
            Fail();
        }
        return std::nullopt;
    }

 private:
    [[noreturn]] void Fail() const {
        throw Unreadable(name_ + ": expected to read it, found: " + std::strerror(errno));
    }

    std::string name_;
    int descriptor_;
};

}  // namespace

void ReadLog(const std::string& name, const TakeLine& take) {
    FollowLog(name, take, {});
}

void FollowLog(const std::string& name, const TakeLine& take, const std::function<bool()>& isOver) {
    const Input input(name);
    if (isOver || input.IsStandardInput()) {
        CountInterrupts();
    }
    std::vector<char> chunk(kChunk);
    LineCutter lines(take);
    int patience = kLastWords;
    while (interrupts < 2) {
        if (isOver && input.IsStandardInput() && !input.HasMore() && isOver()) {
            break;
        }
        const std::optional<std::size_t> count = input.Read(chunk);
        if (!count) {
            continue;
        }
        if (*count > 0) {
            lines.Add({chunk.data(), *count});
        } else if (!isOver || input.IsStandardInput() || isOver() || patience <= 0) {
            break;
        } else {
            poll(nullptr, 0, kFollowInterval);
            patience -= interrupts > 0 ? kFollowInterval : 0;
        }
    }
    lines.End();
}

}  // namespace rig::log
