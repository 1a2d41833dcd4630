#pragma once

#include <string>

namespace rig::judge {

/// @return "A instead of B", printable; with the first bytes that differ where the two look alike, as names
/// do in different normal forms of Unicode, or with other blanks
std::string Instead(const std::string& actual, const std::string& expected);

/// @return where two texts that look alike differ, "; byte 2 is 65 cc 81 instead of c3 a9"; empty for others
std::string Difference(const std::string& actual, const std::string& expected);

}  // namespace rig::judge
