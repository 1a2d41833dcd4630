#pragma once

#include <poll.h>

#include <chrono>

/// The clock of all deadlines and measurements.
using Clock = std::chrono::steady_clock;

/// How long a test waits for a fact that should come about at once. Long, for a machine with much to do.
constexpr std::chrono::seconds kPatience{20};

/// Looks every millisecond whether a fact has come about.
/// @return false if it has not within kPatience
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

/// Milliseconds left of a deadline, as poll takes them: never negative.
inline int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}
