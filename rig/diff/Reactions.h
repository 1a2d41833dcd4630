#pragma once

#include <vector>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// Adds the requests to which the DVR reacts more slowly (worse) or faster (better), beyond the spread: the
/// medians of all later runs lie above what 95 of 100 reactions took before, or the other way round, by more
/// than a fifth and more than 20 ms.
void CompareReactions(const Case& before, const Case& after, std::vector<Difference>& differences);

}  // namespace rig::diff
