#pragma once

#include <string_view>

namespace rig {

/// @return whether the text begins with these characters
inline bool StartsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// @return whether the text ends with these characters
inline bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace rig
