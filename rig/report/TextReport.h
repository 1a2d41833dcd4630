#pragma once

#include <string>

#include "rig/report/Result.h"

namespace rig::report {

/// @return a short table for each run, the checks that did not pass with what was expected and found, and one
///         closing line. Many runs get one matrix, run by check, ahead of that.
std::string TextReport(const Result& result, bool colour);

/// @return the dialogue of each run as a ladder: time since its start, direction, message, faults marked
std::string Timeline(const Result& result);

}  // namespace rig::report
