#pragma once

#include <string>
#include <string_view>

namespace rig {

/// The exit status for a command line or an output that cannot be used.
inline constexpr int kUsageStatus = 64;

/// Prints "velloran-rig COMMAND: TEXT" as a line on standard error. @return the status
int Complain(std::string_view command, int status, const std::string& text);

/// @return whether std::cout, flushed, could not take everything that was printed. A reader that left early
/// (`| head`) has what it wanted: that is no loss.
bool IsOutputLost();

/// @param what  was printed: "report". @return what to say of its loss
std::string LossOf(std::string_view what);

}  // namespace rig
