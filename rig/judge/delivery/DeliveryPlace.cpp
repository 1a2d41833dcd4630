#include "rig/judge/delivery/DeliveryPlace.h"

#include <fmt/format.h>

#include <filesystem>
#include <stdexcept>
#include <utility>

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEvent = "{event}";
constexpr const char* kFile = "{file}";

/// @return the pattern with the names in it, which may hold braces of their own
std::string Filled(const std::string& pattern, const FileName& name) {
    std::string path;
    for (std::size_t at = 0; at < pattern.size();) {
        const bool isEvent = pattern.compare(at, std::string(kEvent).size(), kEvent) == 0;
        const bool isFile = pattern.compare(at, std::string(kFile).size(), kFile) == 0;
        path += isEvent ? name.first : isFile ? name.second : pattern.substr(at, 1);
        at += isEvent ? std::string(kEvent).size() : isFile ? std::string(kFile).size() : 1;
    }
    return path;
}

/// @return whether a part of the path leads up
bool LeadsUp(const fs::path& path) {
    for (const fs::path& part : path) {
        if (part == "..") {
            return true;
        }
    }
    return false;
}

void CheckPattern(const std::string& pattern) {
    const std::string plain = Filled(pattern, {"", ""});
    const bool hasFile = pattern.find(kFile) != std::string::npos;
    if (!hasFile || plain.find_first_of("{}") != std::string::npos || fs::path(pattern).is_absolute() ||
        LeadsUp(pattern)) {
        throw std::runtime_error(
            fmt::format("--pattern: expected a path in the folder, with {} and perhaps {}, found {}", kFile,
                        kEvent, Quoted(pattern)));
    }
}

void CheckFolder(const std::string& folder) {
    std::error_code error;
    const fs::directory_iterator entries(folder, error);
    if (error) {
        throw std::runtime_error(fmt::format("--delivered: expected a folder that can be read, found {}: {}",
                                             Quoted(folder), error.message()));
    }
}

}  // namespace

std::optional<std::string> DeliveryPlace::PathOf(const FileName& name) const {
    const fs::path path = Filled(pattern, name);
    const bool isAbsolute = fs::path(name.first).is_absolute() || fs::path(name.second).is_absolute();
    const bool isNamed = !name.second.empty() && path.has_filename();
    if (isAbsolute || path.is_absolute() || LeadsUp(path) || !isNamed) {
        return std::nullopt;
    }
    return path.lexically_normal().string();
}

std::optional<DeliveryPlace> PlaceOf(const DeliveryOptions& options, DeliveryPlace::Progress progress) {
    if (!options.folder) {
        return std::nullopt;
    }
    CheckPattern(options.pattern);
    CheckFolder(*options.folder);
    DeliveryPlace place;
    place.folder = *options.folder;
    place.pattern = options.pattern;
    place.hash = HashKindNamed(options.hash);
    place.progress = std::move(progress);
    return place;
}

}  // namespace rig::judge
