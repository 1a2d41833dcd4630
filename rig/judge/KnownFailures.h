#pragma once

#include <map>
#include <set>
#include <string>

#include "rig/result/Result.h"

namespace rig::judge {

/// The failures that a firmware is known to have: for each check the reasons, word for word as a report gives
/// them after "found:". Counts, names and times in parentheses at the end differ from run to run and do not
/// count.
using KnownFailures = std::map<std::string, std::set<std::string>>;

/// Reads a list of known failures: on each line a check's id, blanks, and the reason; empty lines and lines
/// that begin with # are skipped. Throws std::runtime_error, which names the line, for an id that no check
/// has, for a line without a reason, and for a file that cannot be read.
KnownFailures ReadKnownFailures(const std::string& path);

/// Turns failures that the list has, for the same reason, into known failures. A failure for another reason
/// gets the list's reasons added.
void Apply(const KnownFailures& known, result::RunResult& run);

/// Which known failures show in some run, and which checks pass: an intermittent fault may not show in every
/// run, but if some run passes and none shows it, the list must be fixed. A warning shows: the list may name
/// it for those who are strict.
class KnownTally {
 public:
    /// Takes a run as Apply left it.
    void Add(const result::RunResult& run);

    /// @return a failed check for each known failure that no run showed though some passed the check; as a
    ///         run of its own, so that every report shows it
    result::RunResult Unseen(const KnownFailures& known) const;

 private:
    std::set<std::string> passed_;  // checks
    std::set<std::string> shown_;
};

}  // namespace rig::judge
