#include "rig/dvr/recordings/TemporaryFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <random>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

/// What a signal that ends the process removes; empty: nothing.
std::array<char, PATH_MAX> removedBySignal{};

void RemoveAndEnd(int signal) {
    if (removedBySignal[0] != '\0') {
        unlink(removedBySignal.data());
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

/// Signals that the process was started to ignore stay ignored.
void CatchSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            action.sa_handler = RemoveAndEnd;
            sigaction(signal, &action, nullptr);
        }
    }
}

/// @return a name that no recording and no other process uses
std::string NewName() {
    std::random_device random;
    return fmt::format(".velloran-rig-{:x}{:x}", random(), random());
}

[[noreturn]] void ThrowUnwritable(const char* expected, const std::filesystem::path& found, int error) {
    throw Failure(ExitStatus::Unusable,
                  fmt::format("--deliver: expected {} that can be written, found {}: {}", expected,
                              Quoted(found.string()), std::strerror(error)));
}

}  // namespace

TemporaryFile::TemporaryFile(const std::filesystem::path& folder, const std::string& finalName)
    : finalPath_(folder / finalName), path_(folder / NewName()) {
    CatchSignals();
    const std::string& name = path_.native();
    if (name.size() >= removedBySignal.size()) {
        ThrowUnwritable("a folder", folder, ENAMETOOLONG);
    }
    std::copy_n(name.c_str() + 1, name.size(), removedBySignal.begin() + 1);  // with its NUL
    removedBySignal[0] = name[0];  // last: a signal may come at any time
    descriptor_ = Descriptor(open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!descriptor_.IsOpen()) {
        const int error = errno;
        removedBySignal[0] = '\0';
        ThrowUnwritable("a folder", folder, error);
    }
}

TemporaryFile::~TemporaryFile() {
    unlink(path_.c_str());
    removedBySignal[0] = '\0';
}

void TemporaryFile::Write(const char* bytes, std::size_t count) {
    std::size_t written = 0;
    while (written < count) {
        const ssize_t some = write(descriptor_.Number(), bytes + written, count - written);
        if (some >= 0) {
            written += static_cast<std::size_t>(some);
        } else if (errno != EINTR) {
            ThrowUnwritable("a file", finalPath_, errno);
        }
    }
}

void TemporaryFile::Keep() {
    if (fsync(descriptor_.Number()) == -1 || rename(path_.c_str(), finalPath_.c_str()) == -1) {
        ThrowUnwritable("a file", finalPath_, errno);
    }
}

}  // namespace rig::dvr
