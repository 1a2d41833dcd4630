#pragma once

#include <poll.h>

#include <chrono>

/// The clock of all deadlines and measurements.
using Clock = std::chrono::steady_clock;

/// How long a test waits for a fact that should become true at once. Long, for a busy machine.
constexpr std::chrono::seconds kPatience{20};

/// Checks every millisecond whether a fact is true.
/// @return false if it is not within kPatience
template <typename Fact>
bool Until(Fact fact) {
    const Clock::time_point deadline = Clock::now() + kPatience;
    while (not fact()) {
        if (Clock::now() > deadline) {
            return false;
        }
        poll(nullptr, 0, 1);
    }
    return true;
}

/// Milliseconds until a deadline, as poll takes them: never negative.
inline int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}
