#pragma once

#include <map>
#include <set>
#include <string>

#include "rig/report/Result.h"

namespace rig::judge {

/// The failures that a firmware is known to have: for each check the reasons, word for word as a report gives
/// them behind "found:". What stands there in parentheses at the end, counts, names and times, differs from
/// run to run and does not count.
using KnownFailures = std::map<std::string, std::set<std::string>>;

/// Reads a list of known failures: in each line a check's id, blanks, and the reason; empty lines and lines
/// that begin with # are left out. Throws std::runtime_error, which names the line, for an id that no check
/// has, for a line without reason, and for a file that cannot be read.
KnownFailures ReadKnownFailures(const std::string& path);

/// Makes known failures of the failures that the list has for the same reason. Another one is told the
/// reasons that the list has.
void Apply(const KnownFailures& known, report::RunResult& run);

/// Which known failures show in some run, and which checks pass: of a fault that comes and goes a run may
/// show nothing, but where some run passes and none shows it the list is to be mended.
class KnownTally {
 public:
    /// Takes a run as Apply left it.
    void Add(const report::RunResult& run);

    /// @return a failed check for each known failure that no run showed, though some passed the check; a run
    ///         of that name, so that every report tells of it
    report::RunResult Unseen(const KnownFailures& known) const;

 private:
    std::set<std::string> passed_;  // checks
    std::set<std::string> shown_;
};

}  // namespace rig::judge
