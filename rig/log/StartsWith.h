#pragma once

#include <string_view>

namespace rig {

/// @return whether the text begins with these characters
inline bool StartsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace rig
