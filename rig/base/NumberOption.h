#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <type_traits>

namespace rig {

/// The longest time that an option takes.
inline constexpr double kLongestSeconds = 86'400;

/// @return the decimal number in the text, leading zeros allowed; nothing if it is something else
template <typename Number>
std::optional<Number> ParseNumber(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional<Number>(number) : std::nullopt;
}

/// For CLI::Option::transform, not `check`: by itself the library would read a number with a leading zero as
/// octal.
/// @return a check of an option's value for a number from `low` to `high`. "nan" is not one.
template <typename Number>
CLI::Validator Between(Number low, Number high) {
    const auto check = [low, high](std::string& text) {
        const std::optional<Number> number = ParseNumber<Number>(text);
        if (number && *number >= low && *number <= high) {
            if constexpr (std::is_integral_v<Number>) {
                text = std::to_string(*number);
            }
            return std::string();
        }
        std::ostringstream expected;
        expected << std::fixed << std::setprecision(0) << "expected a number from " << low << " to " << high;
        return expected.str() + ", found '" + text + "'";
    };
    return CLI::Validator(check, "");
}

}  // namespace rig
