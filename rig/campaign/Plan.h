#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rig/campaign/RunCommand.h"
#include "rig/campaign/evidence/Records.h"
#include "rig/campaign/execution/Rig.h"

namespace rig::campaign {

/// A campaign that has not begun.
struct Planned {
    Rig rig;
    CampaignRecord record;
};

/// @return this process's command line, word by word
std::vector<std::string> OwnCommandLine();

/// @return the campaign that the options describe. Throws std::runtime_error when they cannot be followed.
Planned PlanOf(const RunOptions& options, std::uint32_t seed);

/// Goes on with the campaign in the folder that the options name, which have nothing else: runs the cases
/// that have not come to their end, and reports on all. Throws std::runtime_error if there is no such
/// campaign, or if it would not be the same one.
Outcome Resume(const RunOptions& options);

}  // namespace rig::campaign
