#include "rig/base/WriteWhole.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "rig/base/Descriptor.h"

namespace rig {
namespace {

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

/// @return our standard output or error if the path leads to the same file; -1 otherwise
int OwnOutputAt(const std::string& path) {
    struct stat named = {};
    if (stat(path.c_str(), &named) != 0) {
        return -1;
    }
    for (const int number : {STDOUT_FILENO, STDERR_FILENO}) {
        struct stat own = {};
        if (fstat(number, &own) == 0 && own.st_dev == named.st_dev && own.st_ino == named.st_ino) {
            return number;
        }
    }
    return -1;
}

/// @return the mode of what is to be replaced, or what open() would give
mode_t ModeOf(const std::string& path) {
    struct stat old = {};
    if (stat(path.c_str(), &old) == 0) {
        return old.st_mode & 0777;
    }
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

void WriteInto(const std::string& path, const std::string& content) {
    const int own = OwnOutputAt(path);
    const Descriptor opened(own == -1 ? open(path.c_str(), O_WRONLY | O_CLOEXEC) : -1);
    if (!WriteAll(own == -1 ? opened.Number() : own, content)) {
        Fail(path, errno);
    }
}

void Replace(const std::string& path, const std::string& content) {
    std::string temporary = path + ".XXXXXX";
    const int descriptor = mkstemp(temporary.data());
    if (descriptor == -1) {
        Fail(path, errno);
    }
    const bool isFilled =
        WriteAll(descriptor, content) && fchmod(descriptor, ModeOf(path)) == 0 && fsync(descriptor) == 0;
    int error = isFilled ? 0 : errno;
    if (close(descriptor) != 0 && error == 0) {
        error = errno;
    }
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
    const bool isFile = kind == std::filesystem::file_type::regular;
    const bool isOther =
        std::filesystem::exists(path, unknown) && !isFile && kind != std::filesystem::file_type::directory;
    if (isOther || OwnOutputAt(path) != -1) {
        WriteInto(path, content);
    } else {
        Replace(isFile ? std::filesystem::canonical(path).string() : path, content);
    }
}

}  // namespace rig
