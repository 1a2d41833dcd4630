#pragma once

#include <chrono>
#include <ctime>

/// @return seconds since 1970 by the clock that stamps the log; std::time can be some milliseconds behind it
inline std::time_t TimeNow() {
    return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
}
