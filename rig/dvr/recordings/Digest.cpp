#include "rig/dvr/recordings/Digest.h"

#include "rig/base/Sha256.h"

namespace rig::dvr {

Digest DigestOf(const Recordings& recordings, const std::string& event, const std::string& file) {
    Sha256 hash;
    Digest digest;
    recordings.Read(event, file, [&](const char* bytes, std::size_t count) {
        hash.Add(bytes, count);
        digest.length += count;
    });
    digest.hashCode = hash.Hexadecimal();
    return digest;
}

}  // namespace rig::dvr
