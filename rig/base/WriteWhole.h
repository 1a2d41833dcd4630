#pragma once

#include <string>

namespace rig {

/// Writes a file whole or not at all: under a temporary name next to it, then renamed over it. A replaced
/// file keeps its mode; a new one gets what the umask leaves. A link to a file stays, and its target is
/// replaced. What is not a file (a pipe), or is our own standard output or error, is written to directly:
/// flush earlier output first. Throws std::runtime_error, which names the file and the reason; no temporary
/// file is left.
void WriteWhole(const std::string& path, const std::string& content);

}  // namespace rig
