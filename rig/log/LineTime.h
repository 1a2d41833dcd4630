#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// When a line of a log was written, in microseconds since 1970-01-01 UTC; nothing if it does not say.

namespace rig::log {

constexpr bool IsDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

/// Reads the time of our own logger, "2026-11-20T14:03:07.123456Z".
/// @param text  at least 26 bytes
std::optional<std::int64_t> OwnTime(const char* text);

/// Reads the time that a line of a syslog file or of journalctl's output begins with, in ISO 8601 or as
/// "Nov 20 14:03:07". That has no year: 1970.
std::optional<std::int64_t> ForeignTime(std::string_view prefix);

}  // namespace rig::log
