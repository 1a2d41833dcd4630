#pragma once

#include <string>

#include "rig/result/Result.h"

namespace rig::result {

/// @return the result as JUnit XML: a suite for each run, a case for each check. A failure is a failure, the
///         harness's own failure is an error, and what the log cannot tell is skipped with its reason. A
///         suite's time is the run's duration; the checks of a run are judged together, so a case has no time
///         of its own: readers add up the cases' times, and any share given to them would count twice.
std::string JunitReport(const Result& result);

}  // namespace rig::result
