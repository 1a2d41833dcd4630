#pragma once

#include <cstdint>
#include <string>

#include "rig/dvr/recordings/Recordings.h"

namespace rig::dvr {

/// What FILE_COMPLETE says about a file's contents.
struct Digest {
    std::string hashCode;      // SHA-256 in lower-case hexadecimal
    std::uint64_t length = 0;  // bytes
};

/// Reads the file from beginning to end, in constant memory, and digests it.
/// Throws Failure (Unusable) when it cannot be read.
Digest DigestOf(const Recordings& recordings, const std::string& event, const std::string& file);

}  // namespace rig::dvr
