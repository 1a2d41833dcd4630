#pragma once

namespace fuzz {

/// The harness has ended in an allowed way: see the table in Ends.cpp. Derived from nothing, so that only the
/// fuzz targets catch it.
struct Ended {
    const char* how;
};

/// Called for a failed assertion of the harness. Ends the process, as a finding, unless the table has it.
[[noreturn]] void AssertionFailed(const char* expression);

/// Called for std::abort in the harness.
[[noreturn]] void AbortOfHarness();

/// Called when the harness would go on forever.
/// @param how  as in the table
[[noreturn]] void WouldNotEnd(const char* how);

/// Runs a part of the harness. An end that is not in the table is a finding.
/// @return whether it came back; otherwise it has ended in an allowed way
bool ComesBack(void (*run)(void*), void* context);

template <typename Run>
bool ComesBack(Run&& run) {
    return ComesBack([](void* context) { (*static_cast<Run*>(context))(); }, &run);
}

}  // namespace fuzz
