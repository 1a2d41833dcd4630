#pragma once

namespace fuzz {

/// The harness has ended in a way that it must: see the table in Ends.cpp. Derived from nothing, so that
/// nothing but the fuzz targets catches it.
struct Ended {
    const char* how;
};

/// What a failed assertion of the harness does. Ends the process, as a finding, unless the table holds it.
[[noreturn]] void AssertionFailed(const char* expression);

/// What std::abort does in the harness.
[[noreturn]] void AbortOfHarness();

/// The harness would go on for ever now.
/// @param how  as in the table
[[noreturn]] void WouldNotEnd(const char* how);

/// Runs a part of the harness. An end that the table does not hold is a finding.
/// @return whether it came back; otherwise it has ended as it must
bool ComesBack(void (*run)(void*), void* context);

template <typename Run>
bool ComesBack(Run&& run) {
    return ComesBack([](void* context) { (*static_cast<Run*>(context))(); }, &run);
}

}  // namespace fuzz
