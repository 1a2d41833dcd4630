#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

using EVP_MD_CTX = struct evp_md_ctx_st;

namespace rig {

enum class HashKind { Crc32, Md5, Sha1, Sha256 };

/// @return the kind as command lines and people name it: "sha256"
const char* NameOf(HashKind kind);

/// @return how many hexadecimal digits such a hash has
std::size_t DigitsOf(HashKind kind);

/// @return the names of all kinds: "crc32, md5, sha1, sha256"
std::string HashNames();

/// @return the kind of that name; nothing if there is none
std::optional<HashKind> HashKindNamed(std::string_view name);

/// @return the kind that a hash has by its number of digits; nothing if it is not hexadecimal or none has so
/// many
std::optional<HashKind> HashKindOf(std::string_view hash);

/// The hash of data that arrives in pieces: CRC-32 by zlib, the others by OpenSSL. All throw
/// std::runtime_error if OpenSSL does not offer the kind.
class Hash {
 public:
    explicit Hash(HashKind kind);
    void Add(const char* bytes, std::size_t count);

    /// @return the hash of all that was added, in lower-case hexadecimal; after this nothing can be added
    std::string Hexadecimal();

 private:
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_;  // null for CRC-32
    unsigned long crc_ = 0;
};

}  // namespace rig
