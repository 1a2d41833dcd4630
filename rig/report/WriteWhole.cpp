#include "rig/report/WriteWhole.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace rig::report {
namespace {

constexpr mode_t kReadableByAll = 0644;

bool WriteAll(int descriptor, const std::string& content) {
    for (std::size_t written = 0; written < content.size();) {
        const ssize_t count = write(descriptor, content.data() + written, content.size() - written);
        if (count < 0) {
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

void WriteWhole(const std::string& path, const std::string& content) {
    std::string temporary = path + ".XXXXXX";
    const int descriptor = mkstemp(temporary.data());
    bool isWhole = descriptor != -1;
    int error = errno;
    if (isWhole) {
        isWhole = WriteAll(descriptor, content) && fchmod(descriptor, kReadableByAll) == 0 &&
                  fsync(descriptor) == 0;
        error = errno;
        close(descriptor);
        if (isWhole && std::rename(temporary.c_str(), path.c_str()) != 0) {
            isWhole = false;
            error = errno;
        }
        if (!isWhole) {
            unlink(temporary.c_str());
        }
    }
    if (!isWhole) {
        throw std::runtime_error(path + ": expected to write a file, found: " + std::strerror(error));
    }
}

}  // namespace rig::report
