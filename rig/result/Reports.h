#pragma once

#include <string>

#include "rig/result/Result.h"

namespace rig::result {

/// @return the whole result as JSON; bytes that are not UTF-8 are replaced. Times are microseconds since
/// 1970.
std::string JsonReport(const Result& result);

/// @return the result that JsonReport() wrote; without the log. Throws std::exception if the text is not one.
Result ReadJsonReport(const std::string& text);

/// @return the verdict of that name. Throws std::runtime_error if there is none.
Verdict VerdictOf(const std::string& name);

/// @return the result as JUnit XML: a suite for each run, a case for each check. A failure is a failure, the
///         harness's own failure is an error, and what the log cannot tell is skipped with its reason; a
///         warning passes, with its sentence in the suite's output. A suite's time is the run's duration; the
///         checks of a run are judged together, so a case has no time of its own: readers add up the cases'
///         times, and any share given to them would count twice.
std::string JunitReport(const Result& result);

/// @return the result in the Test Anything Protocol, version 13: one test for each check of each run. What is
///         inconclusive or not reached is not ok; a known failure is a "TODO"; a warning is ok, with a
///         comment.
std::string TapReport(const Result& result);

}  // namespace rig::result
