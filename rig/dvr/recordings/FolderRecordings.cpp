#include "rig/dvr/recordings/FolderRecordings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <memory>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void ThrowUnusable(const std::string& expected, const fs::path& found, const std::string& why) {
    throw Failure(ExitStatus::Unusable, fmt::format("--recordings: expected {}, found {}: {}", expected,
                                                    Quoted(found.string()), why));
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
        ThrowUnusable("a folder for each event", folder, "there is none in it");
    }
    std::sort(events_.begin(), events_.end());
    for (const std::string& event : events_) {
        bool empty = true;
        VisitFiles(event, [&empty](const fs::path&) { empty = false; });
        if (empty) {
            ThrowUnusable("at least one file in each event's folder", folder_ / event, "it has none");
        }
    }
}

Event FolderRecordings::Find(const std::string& event) const {
    const std::size_t start = (folder_ / event / "").native().size();
    std::vector<std::string> files;
    VisitFiles(event, [&](const fs::path& path) { files.push_back(path.native().substr(start)); });
    if (files.empty()) {
        ThrowUnusable("at least one file in each event's folder", folder_ / event, "it no longer has one");
    }
    std::sort(files.begin(), files.end());
    return Event::FromFiles(event, files);
}

bool FolderRecordings::Has(const std::string& event) const {
    return std::binary_search(events_.begin(), events_.end(), event);
}

void FolderRecordings::VisitFiles(const std::string& event,
                                  const std::function<void(const fs::path&)>& visit) const {
    std::error_code error;
    std::error_code ignored;             // what cannot be looked at is not a file
    fs::path entered = folder_ / event;  // what an error is about
    fs::recursive_directory_iterator entry(entered, error);
    while (!error && entry != fs::recursive_directory_iterator()) {
        if (entry->is_directory(ignored)) {
            entered = entry->path();
        } else if (entry->is_regular_file(ignored)) {
            visit(entry->path());
        }
        entry.increment(error);
    }
    if (error) {
        ThrowUnusable("a folder that can be read", entered, error.message());
    }
}

Recordings::Source FolderRecordings::Open(const std::string& event, const std::string& file) const {
    const fs::path path = folder_ / event / file;
    const auto stream = std::make_shared<std::ifstream>(path, std::ios::binary);
    if (!*stream) {
        ThrowUnusable("a file that can be read", path, std::strerror(errno));
    }
    return [path, stream](char* buffer, std::size_t capacity) {
        stream->read(buffer, static_cast<std::streamsize>(capacity));
        if (stream->bad()) {
            ThrowUnusable("a file that can be read", path, std::strerror(errno));
        }
        return static_cast<std::size_t>(stream->gcount());
    };
}

}  // namespace rig::dvr
