#include "rig/base/Hash.h"

#include <fmt/ranges.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace rig {
namespace {

struct HashRow {
    HashKind kind;
    const char* name;
    std::size_t digits;
    const EVP_MD* (*algorithm)();  // null for CRC-32
};

constexpr std::array kHashes = {
    HashRow{HashKind::Crc32, "crc32", 8, nullptr}, HashRow{HashKind::Md5, "md5", 32, EVP_md5},
    HashRow{HashKind::Sha1, "sha1", 40, EVP_sha1}, HashRow{HashKind::Sha256, "sha256", 64, EVP_sha256}};

const HashRow& RowOf(HashKind kind) {
    return *std::find_if(kHashes.begin(), kHashes.end(),
                         [kind](const HashRow& row) { return row.kind == kind; });
}

/// @return the kind of the first row of which this is true
template <typename Fact>
std::optional<HashKind> KindWhere(Fact fact) {
    const auto* const row = std::find_if(kHashes.begin(), kHashes.end(), fact);
    return row == kHashes.end() ? std::nullopt : std::optional<HashKind>(row->kind);
}

void Require(int result) {
    if (result != 1) {
        throw std::runtime_error("a hash is not available from OpenSSL");
    }
}

}  // namespace

const char* NameOf(HashKind kind) {
    return RowOf(kind).name;
}

std::size_t DigitsOf(HashKind kind) {
    return RowOf(kind).digits;
}

std::string HashNames() {
    std::string names;
    for (const HashRow& row : kHashes) {
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return names;
}

std::optional<HashKind> HashKindNamed(std::string_view name) {
    return KindWhere([name](const HashRow& row) { return row.name == name; });
}

std::optional<HashKind> HashKindOf(std::string_view hash) {
    if (hash.find_first_not_of("0123456789abcdefABCDEF") != std::string_view::npos) {
        return std::nullopt;
    }
    return KindWhere([hash](const HashRow& row) { return row.digits == hash.size(); });
}

Hash::Hash(HashKind kind) : context_(nullptr, EVP_MD_CTX_free) {
    if (const auto algorithm = RowOf(kind).algorithm; algorithm != nullptr) {
        context_.reset(EVP_MD_CTX_new());
        Require(EVP_DigestInit_ex(context_.get(), algorithm(), nullptr));
    }
}

void Hash::Add(const char* bytes, std::size_t count) {
    if (context_ == nullptr) {
        crc_ = crc32_z(crc_, reinterpret_cast<const Bytef*>(bytes), count);
    } else {
        Require(EVP_DigestUpdate(context_.get(), bytes, count));
    }
}

std::string Hash::Hexadecimal() {
    if (context_ == nullptr) {
        return fmt::format("{:08x}", crc_);
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> hash{};
    unsigned int size = 0;
    Require(EVP_DigestFinal_ex(context_.get(), hash.data(), &size));
    return fmt::format("{:02x}", fmt::join(hash.begin(), hash.begin() + size, ""));
}

}  // namespace rig
