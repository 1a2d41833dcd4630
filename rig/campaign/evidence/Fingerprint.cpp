#include "rig/campaign/evidence/Fingerprint.h"

#include <filesystem>
#include <fstream>
#include <vector>

#include "rig/base/Hash.h"

namespace rig::campaign {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 16;

/// @return the command's first word, which may be in single quotes
std::string FirstWord(const std::string& command) {
    const bool isQuoted = !command.empty() && command.front() == '\'';
    return isQuoted ? command.substr(1, command.find('\'', 1) - 1) : command.substr(0, command.find(' '));
}

}  // namespace

std::string FingerprintOf(const std::string& command) {
    const std::string path = FirstWord(command);
    const bool isPath = path.find('/') != std::string::npos;  // a bare name is for the shell to find
    std::error_code unknown;
    std::ifstream file(path, std::ios::binary);
    if (!isPath || !std::filesystem::is_regular_file(path, unknown) || !file) {
        return "";
    }
    Hash hash(HashKind::Sha256);
    std::vector<char> chunk(kChunk);
    while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || file.gcount() > 0) {
        hash.Add(chunk.data(), static_cast<std::size_t>(file.gcount()));
    }
    return hash.Hexadecimal();
}

}  // namespace rig::campaign
