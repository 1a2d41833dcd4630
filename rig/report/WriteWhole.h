#pragma once

#include <string>

namespace rig::report {

/// Writes a file whole or not at all: under a temporary name beside it, then renamed over it. A file that is
/// replaced keeps its mode; a new one gets what the umask leaves. A link to a file stays, and the file
/// is replaced. What is no file (a pipe), or is our own standard output or error, is written into as it is:
/// what was printed ahead of it must be flushed. Throws std::runtime_error, which names the file and the
/// reason; no temporary file stays behind.
void WriteWhole(const std::string& path, const std::string& content);

}  // namespace rig::report
