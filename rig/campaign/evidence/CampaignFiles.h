#pragma once

#include <string>

#include "rig/campaign/evidence/Records.h"
#include "rig/result/Result.h"

namespace rig::campaign {

/// The format number of campaign.json and case.json, which doc/campaign.md describes. It rises when something
/// that readers rely on changes; additions do not count.
constexpr int kFormat = 1;

/// @return campaign.json: the whole campaign so far. Bytes that are not UTF-8 are replaced.
std::string CampaignJson(const CampaignRecord& campaign);

/// @return case.json: one case, exactly as in campaign.json
std::string CaseJson(const CaseRecord& record);

/// @return index.html of the campaign's folder: the outcome, the matrix of checks by case, the evidence of
///         each case, the coverage. One self-contained page; its links lead into the folder.
std::string CampaignPage(const CampaignRecord& campaign);

/// Writes campaign.json and index.html. Throws std::runtime_error, which names the file and the reason.
void WriteRecord(const std::string& folder, const CampaignRecord& campaign);

/// Writes the same for other tools: junit.xml and campaign.tap.
void WriteReports(const std::string& folder, const result::Result& result);

}  // namespace rig::campaign
