#pragma once

#include <string>

#include "rig/campaign/evidence/Records.h"

namespace rig::campaign {

/// @return index.html of the campaign's folder: the outcome, the matrix of checks by case, the evidence of
///         each case, the coverage. One self-contained page; its links lead into the folder.
std::string CampaignPage(const CampaignRecord& campaign);

}  // namespace rig::campaign
