#pragma once

#include <string>

#include "rig/result/Result.h"

namespace rig::result {

/// @return the result in the Test Anything Protocol, version 13: one test for each check of each run. What is
///         inconclusive or not reached is not ok; a known failure is a "TODO".
std::string TapReport(const Result& result);

}  // namespace rig::result
