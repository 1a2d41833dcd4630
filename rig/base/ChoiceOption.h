#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace rig {

/// @return a check of an option's value for one of two words
inline CLI::Validator OneOf(const std::string& one, const std::string& other) {
    const auto check = [one, other](const std::string& text) {
        return text == one || text == other ? std::string()
                                            : "expected " + one + " or " + other + ", found '" + text + "'";
    };
    return CLI::Validator(check, "");
}

/// Adds --format, which says how a --list-... option prints.
inline void AddFormatOption(CLI::App& command, std::string& format) {
    command.add_option("--format", format, "How a list is printed")
        ->check(OneOf("text", "markdown"))
        ->type_name("text|markdown")
        ->capture_default_str();
}

}  // namespace rig
