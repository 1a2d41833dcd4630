#include "rig/html/RelativeLink.h"

#include <fmt/format.h>

#include <cctype>
#include <filesystem>

namespace rig::html {
namespace {

bool IsPlain(char letter) {
    const auto byte = static_cast<unsigned char>(letter);
    return byte < 0x80 &&
           (std::isalnum(byte) != 0 || std::string("/-._~@+=,").find(letter) != std::string::npos);
}

}  // namespace

std::string RelativeLink(const std::string& target, const std::string& place) {
    const std::string path =
        std::filesystem::absolute(target).lexically_normal().lexically_proximate(place).generic_string();
    std::string link;
    for (const char letter : path) {
        link += IsPlain(letter) ? std::string(1, letter)
                                : fmt::format("%{:02X}", static_cast<unsigned char>(letter));
    }
    return link;
}

}  // namespace rig::html
