#pragma once

#include <cstddef>
#include <memory>
#include <string>

using EVP_MD_CTX = struct evp_md_ctx_st;

namespace rig {

/// SHA-256 of data that arrives in pieces, by OpenSSL. All throw std::runtime_error if OpenSSL does not offer
/// it.
class Sha256 {
 public:
    Sha256();
    void Add(const char* bytes, std::size_t count);

    /// @return the hash of all that was added, in lower-case hexadecimal; after this nothing can be added
    std::string Hexadecimal();

 private:
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_;
};

}  // namespace rig
