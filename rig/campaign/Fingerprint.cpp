#include "rig/campaign/Fingerprint.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

namespace rig::campaign {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 16;

/// @return the command's first word, which may stand in single quotes
std::string FirstWord(const std::string& command) {
    const bool isQuoted = !command.empty() && command.front() == '\'';
    return isQuoted ? command.substr(1, command.find('\'', 1) - 1) : command.substr(0, command.find(' '));
}

std::string Hexadecimal(const unsigned char* bytes, unsigned int count) {
    std::string text;
    for (unsigned int number = 0; number < count; ++number) {
        text += fmt::format("{:02x}", bytes[number]);
    }
    return text;
}

}  // namespace

std::string FingerprintOf(const std::string& command) {
    const std::string path = FirstWord(command);
    std::error_code unknown;
    std::ifstream file(path, std::ios::binary);
    if (!std::filesystem::is_regular_file(path, unknown) || !file) {
        return "";
    }
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr);
    std::vector<char> chunk(kChunk);
    while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || file.gcount() > 0) {
        EVP_DigestUpdate(context.get(), chunk.data(), static_cast<std::size_t>(file.gcount()));
    }
    unsigned char digest[EVP_MAX_MD_SIZE] = {};
    unsigned int length = 0;
    EVP_DigestFinal_ex(context.get(), digest, &length);
    return Hexadecimal(digest, length);
}

}  // namespace rig::campaign
