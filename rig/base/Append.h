#pragma once

#include <fmt/format.h>

#include <iterator>
#include <string>
#include <utility>

namespace rig {

/// Appends what fmt::format would return.
template <typename... Arguments>
void Append(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
}

}  // namespace rig
