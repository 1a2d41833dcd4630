#pragma once

#include <string>

#include "rig/campaign/Records.h"

namespace rig::campaign {

/// The number of the format of campaign.json and case.json: doc/campaign.md describes it. It rises when what
/// a reader relies on changes; what is added does not count.
constexpr int kFormat = 1;

/// @return campaign.json: the whole campaign as far as it has come. Bytes that are no UTF-8 are replaced.
std::string CampaignJson(const CampaignRecord& campaign);

/// @return case.json: one case, as it also stands in campaign.json
std::string CaseJson(const CaseRecord& record);

}  // namespace rig::campaign
