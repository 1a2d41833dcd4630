#pragma once

#include <string>

#include "rig/report/Result.h"

namespace rig::report {

/// @return the result as JUnit XML: a suite for each run, a case for each check. A failure is a failure, the
///         harness's own failure an error, what the log cannot tell is skipped with its reason.
std::string JunitReport(const Result& result);

}  // namespace rig::report
