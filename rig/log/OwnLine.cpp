#include "rig/log/OwnLine.h"

#include <algorithm>
#include <cstring>

#include "rig/log/LineTime.h"

namespace rig::log {
namespace {

/// Removes up to nine digits that the text begins with: the logger's numbers have no more. @return their
/// number
int TakeNumber(std::string_view& text) {
    constexpr std::size_t kMostDigits = 9;
    const std::size_t most = std::min(text.size(), kMostDigits);
    int number = 0;
    std::size_t digits = 0;
    for (; digits < most && IsDigit(text[digits]); ++digits) {
        number = number * 10 + (text[digits] - '0');
    }
    text.remove_prefix(digits);
    return number;
}

/// Removes the digits that the text begins with. @return whether there are any
bool TakeDigits(std::string_view& text) {
    const auto* const end = std::find_if_not(text.begin(), text.end(), IsDigit);
    const bool hasAny = end != text.begin();
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
    return hasAny;
}

/// Removes a literal that the text begins with. Its size is known when this is compiled: no call to compare.
template <std::size_t size>
bool TakeText(std::string_view& text, const char (&expected)[size]) {
    if (text.size() < size - 1 || std::memcmp(text.data(), expected, size - 1) != 0) {
        return false;
    }
    text.remove_prefix(size - 1);
    return true;
}

}  // namespace

bool ReadOwnLine(std::string_view line, Statement& statement) {
    constexpr std::size_t kTimeEnd = 26;
    if (line.size() <= kTimeEnd) {
        return false;
    }
    std::string_view rest = line.substr(kTimeEnd);
    if (!TakeText(rest, "Z velloran ")) {
        return false;
    }
    const int level = TakeNumber(rest);
    if (level <= 0 || !TakeText(rest, " velloran:") || !TakeDigits(rest) || !TakeText(rest, " ")) {
        return false;
    }
    statement.time = OwnTime(line.data());
    statement.level = level;
    statement.text = rest;
    return statement.time.has_value();
}

}  // namespace rig::log
