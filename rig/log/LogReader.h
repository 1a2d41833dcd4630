#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "rig/log/LineCutter.h"

namespace rig::log {

/// A log that cannot be opened or read. The text names it and the reason.
class Unreadable : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a log line by line to its end; "-" is standard input. A last line without a newline counts.
/// SIGINT does not end reading from standard input: the writer at the other end of the pipe gets the same
/// Ctrl-C, and ends the input after its last words. A second SIGINT does. Throws Unreadable.
void ReadLog(const std::string& name, const TakeLine& take);

/// Reads as ReadLog does, but waits for more at the end of a file. Ends when `isOver`, asked whenever
/// everything available has been read, returns true; for a file also when nothing more comes after a SIGINT,
/// or at a second one.
void FollowLog(const std::string& name, const TakeLine& take, const std::function<bool()>& isOver);

}  // namespace rig::log
