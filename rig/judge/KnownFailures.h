#pragma once

#include <map>
#include <string>

#include "rig/report/Result.h"

namespace rig::judge {

/// The failures that a firmware is known to have: for each check the reason, word for word as a report gives
/// it behind "found:". What stands there in parentheses at the end, counts, names and times, differs from run
/// to run and does not count.
using KnownFailures = std::map<std::string, std::string>;

/// Reads a list of known failures: in each line a check's id, a blank, and the reason; empty lines and lines
/// that begin with # are left out. Throws std::runtime_error, which names the line, for an id that no check
/// has, for a line without reason, and for a file that cannot be read.
KnownFailures ReadKnownFailures(const std::string& path);

/// Makes known failures of the failures that the list has for the same reason. A known failure that passes
/// fails, until the list is mended.
void Apply(const KnownFailures& known, report::RunResult& run);

}  // namespace rig::judge
