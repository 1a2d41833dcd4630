#include "rig/campaign/evidence/CampaignFiles.h"

#include "rig/base/WriteWhole.h"
#include "rig/result/Reports.h"

namespace rig::campaign {

void WriteRecord(const std::string& folder, const CampaignRecord& campaign) {
    WriteWhole(folder + "/campaign.json", CampaignJson(campaign));
    WriteWhole(folder + "/index.html", CampaignPage(campaign));
}

void WriteReports(const std::string& folder, const result::Result& result) {
    WriteWhole(folder + "/junit.xml", result::JunitReport(result));
    WriteWhole(folder + "/campaign.tap", result::TapReport(result));
}

}  // namespace rig::campaign
