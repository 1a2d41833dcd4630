#pragma once

#include <vector>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// Adds the first message at which the dialogues diverge, and the messages that come more or less often: a
/// DVR that tries again, for instance. Both are "changed": the checks say whether they are allowed. What
/// differs between the runs of one campaign is not a change.
void CompareMessages(const Case& before, const Case& after, std::vector<Difference>& differences);

}  // namespace rig::diff
