#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "rig/log/Signs.h"

namespace rig::log {

/// A second, in the unit of all times that are read from logs: microseconds.
constexpr std::int64_t kSecond = 1'000'000;

/// One statement of the harness, taken out of the line that carries it. The views point into that line.
struct Statement {
    std::string_view text;             // after "velloran:N ", still escaped
    std::optional<std::int64_t> time;  // microseconds since 1970-01-01 UTC; syslog's form has no year: 1970
    std::optional<int> process;        // from "velloran[PID]:"
    std::optional<int> level;          // from "velloran LEVEL velloran:"
    Sign sign = Sign::None;
    std::string_view detail;  // the text after the beginning that tells the sign

    /// @return the decimal number that the detail begins with; 0 if there is none, or it does not fit
    std::int64_t Number() const;
};

/// Reads a line of our logger, of a syslog file or of journalctl's output: whatever comes before
/// "velloran:N " is a prefix. @return nothing for a line that is not a statement of the harness
std::optional<Statement> ReadStatement(std::string_view line);

/// @return a statement of this text alone
Statement StatementOf(std::string_view text);

/// @return the text with the logger's escapes undone: `\\`, `\n`, `\r`, `\t`, `\xHH`. Other backslashes stay.
std::string Unescaped(std::string_view text);

/// Appends the unescaped text.
void AppendUnescaped(std::string& plain, std::string_view text);

}  // namespace rig::log
