#pragma once

#include <string>

namespace rig::report {

/// Writes a file whole or not at all: under a temporary name beside it, then renamed over it. A link stays,
/// and what it leads to is replaced. What is no file (a pipe, /dev/stdout) is written into as it is. Throws
/// std::runtime_error, which names the file and the reason; no temporary file stays behind.
void WriteWhole(const std::string& path, const std::string& content);

}  // namespace rig::report
