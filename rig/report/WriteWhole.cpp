#include "rig/report/WriteWhole.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace rig::report {
namespace {

constexpr mode_t kReadableByAll = 0644;

[[noreturn]] void Fail(const std::string& path, int error) {
    throw std::runtime_error(path + ": expected to write a file, found: " + std::strerror(error));
}

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

/// @return 0, or the error; closes the descriptor
int Fill(int descriptor, const std::string& content, bool isFile) {
    const bool isFilled = WriteAll(descriptor, content) &&
                          (!isFile || (fchmod(descriptor, kReadableByAll) == 0 && fsync(descriptor) == 0));
    const int error = isFilled ? 0 : errno;
    return close(descriptor) == 0 || error != 0 ? error : errno;
}

void WriteInto(const std::string& path, const std::string& content) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    const int error = descriptor == -1 ? errno : Fill(descriptor, content, false);
    if (error != 0) {
        Fail(path, error);
    }
}

void Replace(const std::string& path, const std::string& content) {
    std::string temporary = path + ".XXXXXX";
    const int descriptor = mkstemp(temporary.data());
    if (descriptor == -1) {
        Fail(path, errno);
    }
    int error = Fill(descriptor, content, true);
    if (error == 0 && std::rename(temporary.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        unlink(temporary.c_str());
        Fail(path, error);
    }
}

}  // namespace

void WriteWhole(const std::string& path, const std::string& content) {
    std::error_code unknown;
    const auto kind = std::filesystem::status(path, unknown).type();
    if (kind == std::filesystem::file_type::regular) {
        Replace(std::filesystem::canonical(path), content);
    } else if (std::filesystem::exists(path, unknown) && kind != std::filesystem::file_type::directory) {
        WriteInto(path, content);
    } else {
        Replace(path, content);
    }
}

}  // namespace rig::report
