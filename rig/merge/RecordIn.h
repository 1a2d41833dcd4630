#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "rig/campaign/evidence/Records.h"

// What campaign.json says, from which nothing is taken that could lead out of its folder.

namespace rig::merge {

/// @return the record, its cases with plan, run and id only. Throws std::exception if it is none.
campaign::CampaignRecord RecordIn(const nlohmann::ordered_json& json);

/// @return the case of that name, its faults included; where this version has none, only what the name says
campaign::Case PlanOf(const std::string& name);

/// @return whether it names something in a folder, and not elsewhere
bool IsPlainName(const std::string& name);

}  // namespace rig::merge
