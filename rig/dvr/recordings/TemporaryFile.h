#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "rig/base/Descriptor.h"

namespace rig::dvr {

/// A file in the making, under a temporary name in its final folder until it is kept. Otherwise nothing is
/// left of it at the end of this object, or when SIGHUP, SIGINT or SIGTERM ends the process. One at a time.
///
/// All failures throw Failure (Unusable) with a text that names the folder or the file.
class TemporaryFile {
 public:
    /// Creates it, empty. The folder must exist.
    TemporaryFile(const std::filesystem::path& folder, const std::string& finalName);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Appends all bytes.
    void Write(const char* bytes, std::size_t count);

    /// Flushes the contents to the disk and then gives the file its final name, replacing any file of that
    /// name.
    void Keep();

 private:
    std::filesystem::path finalPath_;
    std::filesystem::path path_;
    Descriptor descriptor_;
};

}  // namespace rig::dvr
