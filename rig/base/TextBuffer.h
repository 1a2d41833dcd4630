#pragma once

#include <fmt/format.h>

#include <iterator>
#include <utility>

namespace rig {

/// A text that grows; fmt::to_string gives it.
using TextBuffer = fmt::memory_buffer;

/// Appends what fmt::format would return.
template <typename... Arguments>
void Append(TextBuffer& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
}

}  // namespace rig
