#include "rig/judge/delivery/DeliveredFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "rig/base/Descriptor.h"

namespace rig::judge {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = std::size_t{1} << 18;  // bytes
constexpr std::int64_t kMillion = 1'000'000;

std::int64_t Microseconds(const timespec& time) {
    return time.tv_sec * kMillion + time.tv_nsec / 1000;
}

/// Does not wait for the writer of a pipe.
Descriptor OpenToRead(const fs::path& path) {
    return Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
}

DeliveredFile Failed(const std::error_code& error) {
    const bool isMissing =
        error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    return {
        isMissing ? DeliveredFile::Form::Missing : DeliveredFile::Form::Unreadable, "", error.message(), {}};
}

/// @return the path below the folder; empty if it is elsewhere. Both are without links.
std::string Below(const fs::path& folder, const fs::path& path) {
    const fs::path way = path.lexically_relative(folder);
    return way.empty() || *way.begin() == ".." ? "" : way.string();
}

}  // namespace

Stamp StampOf(const struct stat& found) {
    return {static_cast<std::uint64_t>(found.st_size), Microseconds(found.st_mtim),
            Microseconds(found.st_ctim), found.st_ino};
}

DeliveredFile LookAt(const DeliveryPlace& place, const std::string& path) {
    std::error_code error;
    const fs::path folder = fs::canonical(place.folder, error);
    const fs::path whole = error ? fs::path() : fs::canonical(folder / path, error);
    if (error) {
        return Failed(error);
    }
    DeliveredFile file;
    file.path = Below(folder, whole);
    struct stat found = {};
    const bool isKnown = stat(whole.c_str(), &found) == 0;
    if (file.path.empty()) {
        file.form = DeliveredFile::Form::Outside;
    } else if (isKnown && !S_ISREG(found.st_mode)) {
        file.form = DeliveredFile::Form::NotFile;
    } else if (!isKnown || !OpenToRead(whole).IsOpen()) {
        return Failed(std::error_code(errno, std::generic_category()));
    } else {
        file.form = DeliveredFile::Form::File;
        file.stamp = StampOf(found);
    }
    return file;
}

std::string HashOf(const DeliveryPlace& place, const DeliveredFile& file, HashKind kind) {
    const Descriptor descriptor = OpenToRead(fs::path(place.folder) / file.path);
    std::vector<char> piece(kPiece);
    Hash hash(kind);
    std::uint64_t done = 0;
    for (;;) {
        const ssize_t count = read(descriptor.Number(), piece.data(), piece.size());
        if (count == 0) {
            return hash.Hexadecimal();
        }
        if (count < 0 && errno != EINTR) {
            throw std::runtime_error(std::strerror(errno));
        }
        const std::size_t some = count < 0 ? 0 : static_cast<std::size_t>(count);
        hash.Add(piece.data(), some);
        done += some;
        if (place.progress && !place.progress(file.path, done, file.stamp.size)) {
            throw std::runtime_error("interrupted");
        }
    }
}

}  // namespace rig::judge
