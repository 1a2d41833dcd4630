#pragma once

#include <string>

#include "rig/result/Result.h"

namespace rig::result {

/// @return the whole result as JSON; bytes that are not UTF-8 are replaced. Times are microseconds since
/// 1970.
std::string JsonReport(const Result& result);

}  // namespace rig::result
