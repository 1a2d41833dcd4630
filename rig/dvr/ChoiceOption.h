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

}  // namespace rig
