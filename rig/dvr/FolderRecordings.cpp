#include "rig/dvr/FolderRecordings.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "rig/dvr/Failure.h"
#include "rig/dvr/Printable.h"

namespace rig {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPieceBytes = std::size_t{256} * 1024;

[[noreturn]] void ThrowUnusable(const std::string& expected, const fs::path& found, const std::string& why) {
    throw Failure(ExitStatus::UsageError,
                  "--recordings: expected " + expected + ", found " + Quoted(found.string()) + ": " + why);
}

void CheckReadable(const fs::path& file) {
    if (access(file.c_str(), R_OK) != 0) {
        ThrowUnusable("files that can be read", file, std::strerror(errno));
    }
}

}  // namespace

FolderRecordings::FolderRecordings(const fs::path& folder) : folder_(folder) {
    std::error_code error;
    fs::directory_iterator entries(folder, error);
    if (error) {
        ThrowUnusable("a folder that can be read", folder, error.message());
    }
    for (const fs::directory_entry& entry : entries) {
        if (entry.is_directory(error)) {
            events_.push_back(entry.path().filename().string());
        }
    }
    if (events_.empty()) {
        ThrowUnusable("a folder for each event", folder, "it has no folder in it");
    }
    std::sort(events_.begin(), events_.end());
    for (const std::string& event : events_) {
        const std::vector<std::string> files = ListFiles(event);
        if (files.empty()) {
            ThrowUnusable("at least one file in each event's folder", folder_ / event, "it has none");
        }
        for (const std::string& file : files) {
            CheckReadable(folder_ / event / file);
        }
    }
}

Event FolderRecordings::Find(const std::string& event) const {
    const std::vector<std::string> files = ListFiles(event);
    if (files.empty()) {
        ThrowUnusable("at least one file in each event's folder", folder_ / event, "it has none any more");
    }
    return Event::FromFiles(event, files);
}

std::vector<std::string> FolderRecordings::ListFiles(const std::string& event) const {
    std::vector<std::string> files;
    try {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_ / event)) {
            if (entry.is_regular_file()) {
                files.push_back(entry.path().lexically_relative(folder_ / event).string());
            }
        }
    } catch (const fs::filesystem_error& error) {
        ThrowUnusable("a folder that can be read", error.path1(), error.code().message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void FolderRecordings::Read(const std::string& event, const std::string& file, const Sink& sink) const {
    const fs::path path = folder_ / event / file;
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        ThrowUnusable("a file that can be read", path, std::strerror(errno));
    }
    std::vector<char> piece(kPieceBytes);
    while (stream) {
        stream.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        sink(piece.data(), static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad()) {
        ThrowUnusable("a file that can be read", path, std::strerror(errno));
    }
}

}  // namespace rig
