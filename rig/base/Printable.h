#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace rig {

/// @return the text, safe to print in one line of output: a backslash is written `\\`, a newline `\n`, a
///         carriage return `\r`, a tab `\t`, every other byte below 0x20, 0x7f and what is not UTF-8 `\xHH`.
///         Thus what a peer sends can neither forge a line nor control a terminal, and every byte is seen.
std::string Printable(const std::string& text);

/// @return the same for a text whose backslashes are already escaped, as in a log
std::string WithoutControls(std::string_view text);

/// @return whether the text is UTF-8
bool IsUtf8(std::string_view text);

/// How many bytes of a text are enough to recognise it.
constexpr std::size_t kExcerptBytes = 80;

/// @return at most so many bytes of the text, and no part of a character that goes on after them
std::string_view Beginning(std::string_view text, std::size_t limit);

/// @return at most `limit` bytes of the text, printable, with "..." if some were left out
std::string Excerpt(const std::string& text, std::size_t limit = kExcerptBytes);

/// @return the text printable and in single quotes
std::string Quoted(const std::string& text);

}  // namespace rig
