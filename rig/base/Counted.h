#pragma once

#include <cstdint>
#include <string>

namespace rig {

/// @return a number of things: "1 file", "2 files"
/// @param thing  one of them, a noun with a regular plural
inline std::string Counted(std::uint64_t number, const char* thing) {
    return std::to_string(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace rig
