#pragma once

#include <string>
#include <string_view>

namespace rig::report {

/// @return the text as an XML or HTML document may hold it: UTF-8, with U+FFFD in place of what is none and
///         of each control character but newline and tab (also of NUL). Escapes nothing: that is the
///         writer's part.
std::string ValidText(std::string_view text);

}  // namespace rig::report
