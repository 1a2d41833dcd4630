#pragma once

#include <string>

namespace rig::campaign {

/// @return SHA-256, in lower-case hexadecimal, of the program that a command calls, which tells which build
/// ran. Empty unless the command begins with the path of a file on this machine.
std::string FingerprintOf(const std::string& command);

}  // namespace rig::campaign
