#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <type_traits>

#include "rig/base/ParseNumber.h"

namespace rig {

/// The longest time that an option accepts.
inline constexpr double kLongestSeconds = 86'400;

/// For CLI::Option::transform, not `check`: on its own the library would read a leading zero as octal.
/// @return a check that an option's value is a number from `low` to `high`; "nan" is not
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
        return fmt::format("expected a number from {:.0f} to {:.0f}, found '{}'", static_cast<double>(low),
                           static_cast<double>(high), text);
    };
    return CLI::Validator(check, "");
}

/// @return a check that an option's value is one of two words
inline CLI::Validator OneOf(const std::string& one, const std::string& other) {
    const auto check = [one, other](const std::string& text) {
        return text == one || text == other ? std::string()
                                            : fmt::format("expected {} or {}, found '{}'", one, other, text);
    };
    return CLI::Validator(check, "");
}

/// Says that an option takes the path of a file or folder, `type` as help shows it, and refuses an empty one:
/// a script's unset variable is not a wish to leave the option out.
inline void TakesPath(CLI::Option& option, const std::string& type) {
    option.type_name(type)->check(CLI::Validator(
        [](const std::string& text) { return text.empty() ? "expected a path, found ''" : std::string(); },
        ""));
}

/// Adds --format, which says how a --list-... option prints.
inline void AddFormatOption(CLI::App& command, std::string& format) {
    command.add_option("--format", format, "How to print a list")
        ->check(OneOf("text", "markdown"))
        ->type_name("text|markdown")
        ->capture_default_str();
}

}  // namespace rig
