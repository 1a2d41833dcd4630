#pragma once

#include <chrono>

namespace rig::dvr {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// Throws what the system says about the call that has just failed.
[[noreturn]] void ThrowSystemError(const char* call);

/// Waits until the descriptor is ready for `events`, which -1 never is. @return whether it is by the
/// deadline; checks at least once. Throws Interrupted as soon as `stop` is readable.
bool WaitFor(int descriptor, short events, Clock::time_point deadline, int stop);

/// Waits. Throws Interrupted as soon as `stop` is readable, which -1 never is.
void Pause(Milliseconds time, int stop);

}  // namespace rig::dvr
