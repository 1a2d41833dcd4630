#pragma once

#include <string>
#include <string_view>

namespace rig {

/// @return the text as an XML or HTML document may contain it: UTF-8, with U+FFFD in place of what is not
/// UTF-8
///         and of each control character except newline and tab (NUL too). Escapes nothing: that is up to the
///         writer.
std::string ValidText(std::string_view text);

}  // namespace rig
