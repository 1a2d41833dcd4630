#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace rig {

/// A log that cannot be opened or read. The text names it and the reason.
class Unreadable : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Takes one line of a log, without its newline. The line number counts from 1; the view is valid during the
/// call only. @return whether to go on reading
using TakeLine = std::function<bool(std::uint64_t number, std::string_view line)>;

/// How much of one line is kept; what a line has beyond it is skipped. The harness's longest, a document of
/// a peer in one line, may be cut by this: memory must not grow with what is in a log.
constexpr std::size_t kLongestLine = std::size_t{4} << 20;

/// Reads a log line by line to its end; "-" is standard input. A last line without newline is a line.
/// Throws Unreadable.
void ReadLog(const std::string& name, const TakeLine& take);

/// Reads as ReadLog does, and at the end of the file waits for more, until `take` returns false, or until
/// SIGINT, which from the first call on ends following and not the process.
void FollowLog(const std::string& name, const TakeLine& take);

}  // namespace rig
