#include "rig/judge/Difference.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

constexpr std::size_t kShownBytesThatDiffer = 4;  // bytes

bool IsPlain(char byte) {
    return byte > ' ' && byte < 0x7f;
}

bool IsPlainText(const std::string& text) {
    return std::all_of(text.begin(), text.end(), IsPlain);
}

bool GoesOn(char byte) {
    return (byte & 0xc0) == 0x80;  // a character of UTF-8
}

/// @return the text as the harness takes it from an element
std::string Condensed(const std::string& text) {
    std::string condensed;
    for (const char byte : text) {
        if (std::isspace(static_cast<unsigned char>(byte)) == 0) {
            condensed += byte;
        } else if (!condensed.empty() && condensed.back() != ' ') {
            condensed += ' ';
        }
    }
    return condensed.substr(0, condensed.find_last_not_of(' ') + 1);
}

/// @return the text as the harness takes it from references to its characters
std::string InReferences(const std::string& text) {
    std::string bytes;
    for (const char byte : text) {
        if (GoesOn(byte)) {
            const auto before = static_cast<unsigned char>(bytes.back());
            bytes.back() = static_cast<char>(before << 6 | (byte & 0x3f));
        } else {
            bytes += byte;
        }
    }
    return bytes;
}

/// @return what the harness may have made of a name that the DVR wrote otherwise
std::string WhatWasRead(const std::string& actual, const std::string& expected) {
    if (Condensed(actual) == expected) {
        return "; of blanks in a text the harness takes one for several, and none at the ends: those that "
               "matter must be references (&#32;)";
    }
    if (IsUtf8(actual) && InReferences(actual) == expected) {
        return "; a reference to a character beyond 7f is one byte for the harness: write it in UTF-8";
    }
    return "";
}

std::string BytesAt(const std::string& text, std::size_t at) {
    std::string hex;
    for (const char byte : text.substr(at, kShownBytesThatDiffer)) {
        hex += fmt::format("{}{:02x}", hex.empty() ? "" : " ", static_cast<unsigned char>(byte));
    }
    return hex.empty() ? "missing" : hex;
}

}  // namespace

std::string Difference(const std::string& actual, const std::string& expected) {
    if (actual == expected || (IsPlainText(actual) && IsPlainText(expected))) {
        return "";
    }
    const std::size_t shorter = std::min(actual.size(), expected.size());
    const auto differs = std::mismatch(actual.begin(), actual.begin() + static_cast<std::ptrdiff_t>(shorter),
                                       expected.begin());
    auto at = static_cast<std::size_t>(differs.first - actual.begin());
    while (at > 0 && (GoesOn(actual[at]) || GoesOn(expected[at]))) {
        --at;
    }
    return fmt::format("; from byte {} on: {} instead of {}{}", at + 1, BytesAt(actual, at),
                       BytesAt(expected, at), WhatWasRead(actual, expected));
}

std::string Instead(const std::string& actual, const std::string& expected) {
    return (actual.empty() ? "\"\"" : Printable(actual)) + " instead of " + Printable(expected) +
           Difference(actual, expected);
}

}  // namespace rig::judge
