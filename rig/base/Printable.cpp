#include "rig/base/Printable.h"

#include <algorithm>

namespace rig {
namespace {

bool IsControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
}

void AppendPrintable(std::string& printable, unsigned char byte) {
    static const char* const kDigits = "0123456789abcdef";
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
    if (!IsControl(static_cast<char>(byte))) {
        printable += static_cast<char>(byte);
        return;
    }
    printable += "\\x";
    printable += kDigits[byte >> 4];
    printable += kDigits[byte & 0xf];
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
