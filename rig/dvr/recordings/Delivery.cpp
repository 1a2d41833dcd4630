#include "rig/dvr/recordings/Delivery.h"

#include <fmt/format.h>

#include <system_error>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

namespace fs = std::filesystem;

bool IsPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

/// @return whether everything between slashes is a plain name, so that the path only leads down
bool LeadsDown(const std::string& path) {
    std::size_t start = 0;
    for (std::size_t end = path.find('/'); end != std::string::npos; end = path.find('/', start)) {
        if (!IsPlainName(path.substr(start, end - start))) {
            return false;
        }
        start = end + 1;
    }
    return IsPlainName(path.substr(start));
}

void CheckNames(const Recordings& recordings) {
    for (const std::string& event : recordings.Events()) {
        if (!IsPlainName(event)) {
            throw Failure(ExitStatus::Unusable,
                          "--deliver: expected events that can name a folder, found " + Quoted(event));
        }
        for (const std::string& file : recordings.Find(event).Files()) {
            if (!LeadsDown(file)) {
                throw Failure(ExitStatus::Unusable,
                              fmt::format("--deliver: expected files that stay in the folder of their event, "
                                          "found {} in {}",
                                          Quoted(file), Quoted(event)));
            }
        }
    }
}

/// Creates a folder, and its parents, if they are missing. @return it
const fs::path& Create(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--deliver: expected a folder that can be created, found {}: {}",
                                  Quoted(folder.string()), error.message()));
    }
    return folder;
}

/// @return the folder for the copy of a file
fs::path PlaceOf(const DeliveryFolder& folder, const std::string& event, const std::string& file) {
    return (folder.Folder() / event / file).parent_path();
}

}  // namespace

DeliveryFolder::DeliveryFolder(const fs::path& folder, const Recordings& recordings)
    : folder_(folder), recordings_(recordings) {
    CheckNames(recordings);
    Create(folder);
    const TemporaryFile trial(folder, "");  // reveals more than permissions do, a full disk for example
}

Delivery::Delivery(const DeliveryFolder& folder, const std::string& event, const std::string& file)
    : source_(folder.Source().Open(event, file)),
      copy_(Create(PlaceOf(folder, event, file)), fs::path(file).filename().string()),
      piece_(kMostBytes) {}

std::size_t Delivery::Copy(std::size_t count) {
    const std::size_t read = source_(piece_.data(), count);
    copy_.Write(piece_.data(), read);
    return read;
}

}  // namespace rig::dvr
