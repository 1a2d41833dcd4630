#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "rig/dvr/recordings/Recordings.h"
#include "rig/dvr/recordings/TemporaryFile.h"

namespace rig::dvr {

/// A folder that takes copies of the files as they are transferred, each as FOLDER/EVENT/FILE.
class DeliveryFolder {
 public:
    /// Creates the folder if it is missing. Throws Failure (Unusable) when that fails, when no file can be
    /// created in it, and when the name of an event or file in the recordings would lead out of it.
    /// @param recordings  must outlive this object
    DeliveryFolder(const std::filesystem::path& folder, const Recordings& recordings);

    const std::filesystem::path& Folder() const { return folder_; }
    const Recordings& Source() const { return recordings_; }

 private:
    std::filesystem::path folder_;
    const Recordings& recordings_;
};

/// The copy of one file. It appears in the folder only when it is complete; otherwise nothing is left of it.
/// Everything here throws Failure (Unusable) when something cannot be read or written.
class Delivery {
 public:
    /// The most that one call of Copy takes.
    static constexpr std::size_t kMostBytes = std::size_t{64} * 1024;

    Delivery(const DeliveryFolder& folder, const std::string& event, const std::string& file);

    /// Copies `count` more bytes, fewer only at the file's end. @return how many
    /// @param count  at most kMostBytes
    std::size_t Copy(std::size_t count);

    /// Gives the copy its name. It replaces an older one: a file may be transferred again.
    void Complete() { copy_.Keep(); }

 private:
    Recordings::Source source_;
    TemporaryFile copy_;
    std::vector<char> piece_;
};

}  // namespace rig::dvr
