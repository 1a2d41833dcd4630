#include "rig/base/Printable.h"

#include <fmt/format.h>
#include <utf8.h>

#include <algorithm>

namespace rig {
namespace {

bool IsControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
}

void AppendByte(std::string& printable, char byte) {
    switch (byte) {
        case '\n':
            printable += "\\n";
            return;
        case '\r':
            printable += "\\r";
            return;
        case '\t':
            printable += "\\t";
            return;
        default:
            printable += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    }
}

/// @param backslash  what is written for one
std::string Escaped(std::string_view text, std::string_view backslash) {
    std::string printable;
    printable.reserve(text.size());
    const char* invalid = utf8::find_invalid(text.begin(), text.end());
    for (const char* byte = text.begin(); byte != text.end(); ++byte) {
        if (*byte == '\\') {
            printable += backslash;
        } else if (IsControl(*byte) || byte == invalid) {
            AppendByte(printable, *byte);
        } else {
            printable += *byte;
        }
        if (byte == invalid) {
            invalid = utf8::find_invalid(byte + 1, text.end());
        }
    }
    return printable;
}

/// @return whether the text has neither controls nor what is not ASCII, as almost all have
bool IsPlain(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte < '\x7f'; });
}

}  // namespace

std::string Printable(const std::string& text) {
    const bool isItself = IsPlain(text) && text.find('\\') == std::string::npos;
    return isItself ? text : Escaped(text, "\\\\");
}

std::string WithoutControls(std::string_view text) {
    return IsPlain(text) ? std::string(text) : Escaped(text, "\\");
}

bool IsUtf8(std::string_view text) {
    return utf8::is_valid(text.begin(), text.end());
}

std::string_view Beginning(std::string_view text, std::size_t limit) {
    constexpr std::size_t kLongestCharacter = 4;
    if (text.size() <= limit) {
        return text;
    }
    std::size_t end = limit;
    const auto goesOn = [text](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80U;
    };
    while (end > 0 && limit - end < kLongestCharacter && goesOn(end)) {
        --end;
    }
    return text.substr(0, goesOn(end) ? limit : end);
}

std::string Excerpt(const std::string& text, std::size_t limit) {
    return Printable(std::string(Beginning(text, limit))) + (text.size() <= limit ? "" : "...");
}

std::string Quoted(const std::string& text) {
    return "'" + Printable(text) + "'";
}

}  // namespace rig
