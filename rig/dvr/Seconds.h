#pragma once

#include <chrono>

namespace rig::dvr {

/// @return seconds as the command line takes them, with fractions, rounded down to milliseconds
inline std::chrono::milliseconds FromSeconds(double seconds) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace rig::dvr
