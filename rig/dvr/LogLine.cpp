#include "rig/dvr/LogLine.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <ctime>

namespace rig {
namespace {

constexpr const char* kName = "velloran:";

bool IsDigit(char byte) {
    return std::isdigit(static_cast<unsigned char>(byte)) != 0;
}

/// Reads a time with its zone. Times without a zone or a year are as good as none.
std::optional<LogTime> ParseTime(const std::string& line) {
    std::tm parts{};
    const char* at = strptime(line.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    if (at == nullptr) {
        return std::nullopt;
    }
    double fraction = 0;
    if (*at == '.' || *at == ',') {
        const std::string digits(at + 1, std::string(at + 1).find_first_not_of("0123456789"));
        fraction = std::strtod(("0." + digits).c_str(), nullptr);
        at += 1 + digits.size();
    }
    std::tm zone{};
    if (strptime(at, "%z", &zone) == nullptr) {
        return std::nullopt;
    }
    return std::chrono::seconds(timegm(&parts) - zone.tm_gmtoff) + LogTime(std::llround(fraction * 1e6));
}

/// @return the digits of "velloran[DIGITS]: " at the end of the prefix
std::string ProcessOf(const std::string& prefix) {
    const std::size_t open = prefix.rfind('[');
    const std::size_t close = prefix.rfind("]: ");
    if (open == std::string::npos || close == std::string::npos || close < open ||
        close + 3 != prefix.size()) {
        return "";
    }
    return prefix.substr(open + 1, close - open - 1);
}

/// @return the byte behind "velloran:N " where that starts a word at `at`; npos where it does not
std::size_t BehindHead(const std::string& line, std::size_t at) {
    std::size_t behind = at + std::char_traits<char>::length(kName);
    const std::size_t digits = behind;
    while (behind < line.size() && IsDigit(line[behind])) {
        ++behind;
    }
    const bool isWord = at == 0 || line[at - 1] == ' ';
    return isWord && behind > digits && behind < line.size() && line[behind] == ' ' ? behind + 1
                                                                                    : std::string::npos;
}

/// @return the value of "xHH"; nothing where that does not stand there
std::optional<char> ParseHex(const std::string& text, std::size_t at) {
    unsigned int value = 0;
    if (at + 3 > text.size() || text[at] != 'x') {
        return std::nullopt;
    }
    const char* const first = text.data() + at + 1;
    const auto parsed = std::from_chars(first, first + 2, value, 16);
    return parsed.ptr == first + 2 ? std::optional<char>(static_cast<char>(value)) : std::nullopt;
}

}  // namespace

std::optional<LogLine> ParseLogLine(const std::string& line) {
    for (std::size_t at = line.find(kName); at != std::string::npos; at = line.find(kName, at + 1)) {
        const std::size_t behind = BehindHead(line, at);
        if (behind != std::string::npos) {
            return LogLine{ParseTime(line), ProcessOf(line.substr(0, at)), Unescape(line.substr(behind))};
        }
    }
    return std::nullopt;
}

std::string Unescape(const std::string& printable) {
    std::string bytes;
    bytes.reserve(printable.size());
    for (std::size_t at = 0; at < printable.size(); ++at) {
        const char next = printable[at] == '\\' && at + 1 < printable.size() ? printable[at + 1] : '\0';
        const std::optional<char> hex = next == 'x' ? ParseHex(printable, at + 1) : std::nullopt;
        const std::size_t plain = next == '\0' ? std::string::npos : std::string("\\nrt").find(next);
        if (hex) {
            bytes += *hex;
            at += 3;
        } else if (plain != std::string::npos) {
            bytes += "\\\n\r\t"[plain];
            ++at;
        } else {
            bytes += printable[at];
        }
    }
    return bytes;
}

}  // namespace rig
