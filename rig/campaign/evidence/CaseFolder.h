#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rig/base/Descriptor.h"

namespace rig::campaign {

/// A file of evidence that grows while the case runs.
class GrowingFile {
 public:
    /// Starts the file, or continues an existing one. Throws std::runtime_error, which names the file and the
    /// reason.
    explicit GrowingFile(std::string path, bool goesOn = false);

    /// Appends. Throws std::runtime_error, which names the file and the reason.
    void Add(std::string_view bytes);

    int Number() const { return descriptor_.Number(); }

 private:
    std::string path_;
    Descriptor descriptor_;
};

/// The folder with a case's evidence.
class CaseFolder {
 public:
    /// Makes the folder. Throws std::runtime_error when it cannot.
    explicit CaseFolder(std::string path);

    const std::string& Path() const { return path_; }
    std::string PathOf(const std::string& file) const { return path_ + "/" + file; }

    /// Starts a file that grows.
    GrowingFile Grow(const std::string& file) const { return GrowingFile(PathOf(file)); }

    /// Continues a file that grows, or starts it.
    GrowingFile Append(const std::string& file) const { return GrowingFile(PathOf(file), true); }

    /// Writes a file whole or not at all.
    void Write(const std::string& file, const std::string& content) const;

    /// @return the names of the existing files, sorted
    std::vector<std::string> Files() const;

 private:
    std::string path_;
};

/// Makes the campaign's folder. Throws std::runtime_error if it already exists and is not empty.
void MakeCampaignFolder(const std::string& path);

/// Throws std::runtime_error, as MakeCampaignFolder does, but makes nothing.
void CheckCampaignFolder(const std::string& path);

/// @return whether the path leads to the folder, or into it
bool IsInside(const std::string& path, const std::string& folder);

/// @param isToRead  others may read it, too
/// @return what keeps others from writing to the campaign's folder while it lives. Throws std::runtime_error
/// if somebody else has it.
Descriptor HoldCampaignFolder(const std::string& path, bool isToRead = false);

}  // namespace rig::campaign
