#include "rig/dvr/recordings/BadCopy.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

namespace fs = std::filesystem;

/// @return the file's content, from its source
std::string ContentOf(const Recordings& recordings, const std::string& event, const std::string& file) {
    std::string content;
    recordings.Read(event, file, [&](const char* bytes, std::size_t count) { content.append(bytes, count); });
    return content;
}

/// @return the other event's file that a careless DVR would take for this one
std::string ForeignContent(const Recordings& recordings, const std::string& event, const std::string& file) {
    for (const std::string& other : recordings.Events()) {
        if (other != event) {
            const std::vector<std::string> files = recordings.Find(other).Files();
            const bool hasSame = std::find(files.begin(), files.end(), file) != files.end();
            return ContentOf(recordings, other, hasSame ? file : files.front());
        }
    }
    return "";
}

void Replace(const fs::path& path, const std::string& content) {
    std::error_code shown;  // by the file
    fs::create_directories(path.parent_path(), shown);
    if (!(std::ofstream(path, std::ios::binary) << content << std::flush)) {
        throw Failure(
            ExitStatus::Unusable,
            fmt::format("--deliver: expected a file that can be written, found {}", Quoted(path.string())));
    }
}

void Remove(const fs::path& path) {
    std::error_code error;
    fs::remove(path, error);
    if (error) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--deliver: expected a file that can be removed, found {}: {}",
                                  Quoted(path.string()), error.message()));
    }
}

}  // namespace

void SpoilCopy(const DeliveryFolder& folder, const std::string& event, const std::string& file, Copy copy) {
    if (copy == Copy::Good) {
        return;
    }
    const fs::path path = folder.Folder() / event / file;
    std::string content = ContentOf(folder.Source(), event, file);
    switch (copy) {
        case Copy::Missing:
        case Copy::Late:
            Remove(path);
            break;
        case Copy::Empty:
            Replace(path, "");
            break;
        case Copy::Cut:
            Replace(path, content.substr(0, content.size() / 2));
            break;
        case Copy::Wrong:
            content.front() = static_cast<char>(content.front() ^ 1);
            Replace(path, content);
            break;
        case Copy::Foreign:
            Replace(path, ForeignContent(folder.Source(), event, file));
            break;
        case Copy::Half:
            Replace(path.string() + ".part", content.substr(0, content.size() / 2));
            break;
        case Copy::Extra:
            Replace(path.parent_path() / "nobody-asked.ts", content);
            break;
        case Copy::Good:
            break;
    }
}

void CopyWhole(const DeliveryFolder& folder, const std::string& event, const std::string& file) {
    Delivery delivery(folder, event, file);
    while (delivery.Copy(Delivery::kMostBytes) == Delivery::kMostBytes) {
    }
    delivery.Complete();
}

}  // namespace rig::dvr
