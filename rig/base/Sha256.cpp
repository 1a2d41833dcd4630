#include "rig/base/Sha256.h"

#include <fmt/ranges.h>
#include <openssl/evp.h>

#include <array>
#include <stdexcept>

namespace rig {
namespace {

void Require(int result) {
    if (result != 1) {
        throw std::runtime_error("SHA-256 is not available from OpenSSL");
    }
}

}  // namespace

Sha256::Sha256() : context_(EVP_MD_CTX_new(), EVP_MD_CTX_free) {
    Require(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

void Sha256::Add(const char* bytes, std::size_t count) {
    Require(EVP_DigestUpdate(context_.get(), bytes, count));
}

std::string Sha256::Hexadecimal() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> hash{};
    unsigned int size = 0;
    Require(EVP_DigestFinal_ex(context_.get(), hash.data(), &size));
    return fmt::format("{:02x}", fmt::join(hash.begin(), hash.begin() + size, ""));
}

}  // namespace rig
