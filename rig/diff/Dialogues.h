#pragma once

#include <vector>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// Adds the first message at which the dialogues part, and the messages that come more or less often: a DVR
/// that tries again, for instance. Both are "changed": whether they are allowed is for the checks to say.
/// What runs of one campaign differ in among themselves is no change.
void CompareMessages(const Case& before, const Case& after, std::vector<Difference>& differences);

}  // namespace rig::diff
