#pragma once

#include <stdexcept>
#include <string>

#include "rig/log/LineCutter.h"

namespace rig {

/// A log that cannot be opened or read. The text names it and the reason.
class Unreadable : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a log line by line to its end; "-" is standard input. A last line without newline is a line.
/// Throws Unreadable.
void ReadLog(const std::string& name, const TakeLine& take);

/// Reads as ReadLog does, and at the end of the file waits for more, until `take` returns false, or until
/// SIGINT, which from the first call on ends following and not the process.
void FollowLog(const std::string& name, const TakeLine& take);

}  // namespace rig
