#pragma once

#include <pugixml.hpp>

#include "rig/campaign/evidence/Records.h"

namespace rig::campaign {

/// Adds the section of a campaign's page that tells of each case: what came out, why, and its evidence.
void AddCases(pugi::xml_node main, const CampaignRecord& campaign);

}  // namespace rig::campaign
