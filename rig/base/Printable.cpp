#include "rig/base/Printable.h"

#include <fmt/format.h>

#include <algorithm>

namespace rig {
namespace {

bool IsControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
}

void AppendPrintable(std::string& printable, unsigned char byte) {
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
            break;
    }
    if (IsControl(static_cast<char>(byte))) {
        printable += fmt::format("\\x{:02x}", byte);
    } else {
        printable += static_cast<char>(byte);
    }
}

}  // namespace

std::string Printable(const std::string& text) {
    std::string printable;
    printable.reserve(text.size());
    for (const char byte : text) {
        if (byte == '\\') {
            printable += '\\';
        }
        AppendPrintable(printable, static_cast<unsigned char>(byte));
    }
    return printable;
}

std::string WithoutControls(std::string_view text) {
    if (std::none_of(text.begin(), text.end(), IsControl)) {
        return std::string(text);
    }
    std::string printable;
    printable.reserve(text.size());
    for (const char byte : text) {
        AppendPrintable(printable, static_cast<unsigned char>(byte));
    }
    return printable;
}

std::string Excerpt(const std::string& text, std::size_t limit) {
    if (text.size() <= limit) {
        return Printable(text);
    }
    return Printable(text.substr(0, limit)) + "...";
}

std::string Quoted(const std::string& text) {
    return "'" + Printable(text) + "'";
}

}  // namespace rig
