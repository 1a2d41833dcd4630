#include "rig/campaign/evidence/CaseFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/base/WriteWhole.h"

namespace rig::campaign {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kReadableByAll = 0644;

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(path + ": expected to write evidence there, found: " + reason);
}

void MakeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (error) {
        Fail(path, error.message());
    }
}

}  // namespace

GrowingFile::GrowingFile(std::string path, bool goesOn) : path_(std::move(path)) {
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | (goesOn ? 0 : O_TRUNC);
    descriptor_ = Descriptor(open(path_.c_str(), flags, kReadableByAll));
    if (!descriptor_.IsOpen()) {
        Fail(path_, std::strerror(errno));
    }
}

void GrowingFile::Add(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor_.Number(), bytes.data(), bytes.size());
        if (count < 0) {
            Fail(path_, std::strerror(errno));
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

CaseFolder::CaseFolder(std::string path) : path_(std::move(path)) {
    MakeFolder(path_);
}

void CaseFolder::Write(const std::string& file, const std::string& content) const {
    WriteWhole(PathOf(file), content);
}

std::vector<std::string> CaseFolder::Files() const {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
        files.push_back(entry.path().filename().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

Descriptor HoldCampaignFolder(const std::string& path, bool isToRead) {
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (flock(folder.Number(), (isToRead ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        throw std::runtime_error(
            fmt::format("expected a folder to which no other campaign writes, found {}", Quoted(path)));
    }
    return folder;
}

void CheckCampaignFolder(const std::string& path) {
    std::error_code unknown;
    if (fs::exists(path, unknown) && !(fs::is_directory(path, unknown) && fs::is_empty(path, unknown))) {
        throw std::runtime_error(
            fmt::format("--out: expected a folder that is new or empty, found {}", path));
    }
}

void MakeCampaignFolder(const std::string& path) {
    CheckCampaignFolder(path);
    MakeFolder(path);
}

bool IsInside(const std::string& path, const std::string& folder) {
    const fs::path way = fs::weakly_canonical(path).lexically_relative(fs::weakly_canonical(folder));
    return !way.empty() && *way.begin() != "..";
}

}  // namespace rig::campaign
