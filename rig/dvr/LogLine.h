#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace rig {

/// When a line was logged, since 1970.
using LogTime = std::chrono::microseconds;

/// One line of the harness's log. It may stand in the harness's standard output, in a syslog file or in what
/// journalctl prints: whatever stands before "velloran:N " is a prefix.
struct LogLine {
    std::optional<LogTime> time;  // where the prefix starts with one such as 2026-11-20T14:03:07.123456Z
    std::string process;          // its number, where the prefix ends with one such as velloran[212]:
    std::string text;             // what follows "velloran:N ", with its escapes resolved
};

/// @param line  without its newline
/// @return nothing where it is not a line of the harness's log
std::optional<LogLine> ParseLogLine(const std::string& line);

/// Undoes Printable.
/// @return the bytes; what is no escape stays as it is
std::string Unescape(const std::string& printable);

}  // namespace rig
