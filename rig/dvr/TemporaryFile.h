#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "rig/common/Descriptor.h"

namespace rig {

/// A file in the making. It bears a temporary name in its final folder until it is kept. Unless it is,
/// nothing is left of it at the end of this object, nor when SIGHUP, SIGINT or SIGTERM ends the process. One
/// at a time.
///
/// Whatever fails throws Failure (UsageError) with a text that names the folder or the file.
class TemporaryFile {
 public:
    /// Creates it, empty. The folder must exist.
    TemporaryFile(const std::filesystem::path& folder, const std::string& finalName);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    /// Appends all bytes.
    void Write(const char* bytes, std::size_t count);

    /// Brings the contents to the disk and then gives the file its final name; what bore that name is
    /// replaced.
    void Keep();

 private:
    std::filesystem::path finalPath_;
    std::filesystem::path path_;
    Descriptor descriptor_;
};

}  // namespace rig
