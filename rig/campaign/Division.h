#pragma once

#include <vector>

#include "rig/campaign/Cases.h"
#include "rig/campaign/Shard.h"

namespace rig::campaign {

/// Divides a campaign so that its parts take about equally long; every machine comes to the same division.
/// Each part has the clean exports of the dialects of its cases, and of all dialects if no case is left for
/// it.
/// @param whole    all cases of the campaign
/// @param hasOnlyChosen  its clean exports were chosen like other cases: each belongs to one part
/// @return the cases of the part, in the order of the campaign
std::vector<Case> PartOf(const std::vector<Case>& whole, const Shard& shard, bool hasOnlyChosen);

}  // namespace rig::campaign
