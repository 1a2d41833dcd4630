#pragma once

#include <string>

namespace rig::campaign {

/// @return SHA-256, in lower-case hexadecimal, of the program that a command calls: which build it was that
/// ran. Empty where the command does not begin with the path of a file on this machine.
std::string FingerprintOf(const std::string& command);

}  // namespace rig::campaign
