#include "rig/campaign/execution/LogSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace rig::campaign {
namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

[[noreturn]] void FailToRead(const std::string& name) {
    throw std::runtime_error(name + ": expected a log, found: " + std::strerror(errno));
}

}  // namespace

LogSource::LogSource(Descriptor pipe) : descriptor_(std::move(pipe)) {
    fcntl(descriptor_.Number(), F_SETFL, O_NONBLOCK);
}

LogSource::LogSource(std::string path) : path_(std::move(path)) {
    descriptor_ = Descriptor(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
    if (descriptor_.IsOpen()) {
        lseek(descriptor_.Number(), 0, SEEK_END);
    } else if (errno != ENOENT) {
        FailToRead(path_);
    }
}

std::string LogSource::Read() {
    if (!path_.empty()) {
        OpenNew();
    }
    if (!descriptor_.IsOpen() || hasEnded_) {
        return "";
    }
    std::string piece(kPiece, '\0');
    const ssize_t count = read(descriptor_.Number(), piece.data(), piece.size());
    if (count == -1 && errno != EAGAIN && errno != EINTR) {
        FailToRead(path_.empty() ? "the harness's standard output" : path_);
    }
    hasEnded_ = count == 0 && path_.empty();
    piece.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return piece;
}

/// A new file under the name, or the old one truncated, is what a restarted harness writes to.
void LogSource::OpenNew() {
    struct stat named = {};
    if (stat(path_.c_str(), &named) != 0) {
        return;
    }
    struct stat held = {};
    const bool isSame = descriptor_.IsOpen() && fstat(descriptor_.Number(), &held) == 0 &&
                        held.st_ino == named.st_ino && held.st_dev == named.st_dev;
    if (!isSame) {
        descriptor_ = Descriptor(open(path_.c_str(), O_RDONLY | O_CLOEXEC));
        if (!descriptor_.IsOpen() && errno != ENOENT) {
            FailToRead(path_);
        }
    } else if (lseek(descriptor_.Number(), 0, SEEK_CUR) > named.st_size) {
        lseek(descriptor_.Number(), 0, SEEK_SET);
    }
}

}  // namespace rig::campaign
