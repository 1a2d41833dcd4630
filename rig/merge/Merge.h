#pragma once

#include <optional>
#include <vector>

#include "rig/campaign/evidence/Records.h"
#include "rig/merge/Part.h"
#include "rig/result/Result.h"

namespace rig::merge {

/// One campaign made of several.
struct Merged {
    campaign::CampaignRecord record;
    result::Result result;                          // for JUnit and TAP, cases that no part ran included
    std::vector<std::optional<std::size_t>> parts;  // of each case: the part that it stands as, from 0
};

/// Puts the cases together, each once. One that a part planned and none ran is NOT RUN; one that was in
/// progress when its part was killed is INTERRUPTED. Throws log::Unreadable if a verdict cannot be read.
Merged Merge(const std::vector<Part>& parts);

}  // namespace rig::merge
