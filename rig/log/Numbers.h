#pragma once

#include <charconv>
#include <cstdint>
#include <string_view>

namespace rig::log {

/// @return the decimal number that the text begins with; 0 if there is none, or it does not fit
inline std::int64_t NumberIn(std::string_view text) {
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace rig::log
