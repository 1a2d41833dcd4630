#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace rig {

/// @return whether one of the texts is this one
inline bool Holds(const std::vector<std::string>& all, std::string_view one) {
    return std::find(all.begin(), all.end(), one) != all.end();
}

}  // namespace rig
