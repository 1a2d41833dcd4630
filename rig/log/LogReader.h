#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "rig/log/LineCutter.h"

namespace rig {

/// A log that cannot be opened or read. The text names it and the reason.
class Unreadable : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a log line by line to its end; "-" is standard input. A last line without newline is a line.
/// SIGINT does not end reading from standard input: what writes it in a pipe gets the same Ctrl-C, and ends
/// the input when it has said its last. Another SIGINT does. Throws Unreadable.
void ReadLog(const std::string& name, const TakeLine& take);

/// Reads as ReadLog does, and at the end of a file waits for more. Ends when `isOver` returns true, which is
/// asked whenever all that is there has been read; for a file also when nothing comes any more behind a
/// SIGINT, or at another one.
void FollowLog(const std::string& name, const TakeLine& take, const std::function<bool()>& isOver);

}  // namespace rig
