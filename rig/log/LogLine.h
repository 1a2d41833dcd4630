#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace rig::log {

/// A second, in the unit of all times that are read from logs: microseconds.
constexpr std::int64_t kSecond = 1'000'000;

/// One statement of the harness, taken out of the line that carries it. The views point into that line.
struct LogLine {
    std::string_view text;             // after "velloran:N ", still escaped
    std::optional<std::int64_t> time;  // microseconds since 1970-01-01 UTC; syslog's form has no year: 1970
    std::optional<int> process;        // from "velloran[PID]:"
    std::optional<int> level;          // from "velloran LEVEL velloran:"
};

/// Reads a line of our logger, of a syslog file or of journalctl's output: whatever comes before
/// "velloran:N " is a prefix. @return nothing for a line that is not a statement of the harness
std::optional<LogLine> ParseLogLine(std::string_view line);

/// @return the text with the logger's escapes undone: `\\`, `\n`, `\r`, `\t`, `\xHH`. Other backslashes stay.
std::string Unescaped(std::string_view text);

}  // namespace rig::log
