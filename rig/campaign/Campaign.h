#pragma once

#include <string>

#include "rig/campaign/CaseRun.h"
#include "rig/campaign/Display.h"
#include "rig/campaign/Interrupts.h"
#include "rig/campaign/Records.h"

namespace rig::campaign {

/// Runs all planned cases one behind the other and leaves the evidence in a folder. campaign.json is written
/// anew around each case, so that it tells the truth whenever the campaign is broken off.
class Campaign {
 public:
    /// @param folder  is there and empty
    /// @param record  all but what comes of the run
    Campaign(Rig rig, std::string folder, CampaignRecord record);

    /// Throws std::runtime_error when evidence cannot be written.
    /// @return the outcome that decides for all
    Outcome Run();

 private:
    void RunCase(CaseRecord& record);
    void TakeClean(const CaseRecord& record);
    void TakeResult(const CaseRecord& record, const CaseRun& run);
    void FindKnownUnseen();
    void WriteRecord() const;
    void WriteReports() const;

    Rig rig_;
    std::string folder_;
    CampaignRecord record_;
    Interrupts interrupts_;
    Display display_;
    std::set<int> failedClean_;  // dialects whose first clean export did not pass
    double away_ = 0;            // seconds for which the last case has told the DVR to call nobody
    report::Result result_;
};

}  // namespace rig::campaign
