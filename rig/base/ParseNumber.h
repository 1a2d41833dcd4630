#pragma once

#include <charconv>
#include <optional>
#include <string>
#include <system_error>

namespace rig {

/// @return the decimal number in the text, leading zeros allowed; nothing if it is something else
template <typename Number>
std::optional<Number> ParseNumber(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional<Number>(number) : std::nullopt;
}

}  // namespace rig
