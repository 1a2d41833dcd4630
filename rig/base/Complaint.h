#pragma once

#include <string>
#include <string_view>

namespace rig {

/// Exit status for a command line, or an output, that cannot be used.
inline constexpr int kUsageStatus = 64;

/// Prints "velloran-rig COMMAND: TEXT" as a line on standard error. @return the status
int Complain(std::string_view command, int status, const std::string& text);

}  // namespace rig
