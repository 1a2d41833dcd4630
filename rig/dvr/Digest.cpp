#include "rig/dvr/Digest.h"

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <stdexcept>

namespace rig {
namespace {

void Require(int result) {
    if (result != 1) {
        throw std::runtime_error("SHA-256 is not available from OpenSSL");
    }
}

std::string Hexadecimal(const unsigned char* bytes, unsigned int count) {
    static const char* const kDigits = "0123456789abcdef";
    std::string text;
    for (unsigned int index = 0; index < count; ++index) {
        text += kDigits[bytes[index] >> 4];
        text += kDigits[bytes[index] & 0xf];
    }
    return text;
}

}  // namespace

Digest DigestOf(const Recordings& recordings, const std::string& event, const std::string& file) {
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    Require(EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr));
    Digest digest;
    recordings.Read(event, file, [&](const char* bytes, std::size_t count) {
        Require(EVP_DigestUpdate(context.get(), bytes, count));
        digest.length += count;
    });
    std::array<unsigned char, EVP_MAX_MD_SIZE> hash{};
    unsigned int size = 0;
    Require(EVP_DigestFinal_ex(context.get(), hash.data(), &size));
    digest.hashCode = Hexadecimal(hash.data(), size);
    return digest;
}

}  // namespace rig
