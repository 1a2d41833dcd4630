#pragma once

#include <memory>
#include <set>
#include <string>

#include "rig/base/Descriptor.h"
#include "rig/base/Interrupts.h"
#include "rig/campaign/Display.h"
#include "rig/campaign/Search.h"
#include "rig/campaign/evidence/RecordReader.h"
#include "rig/campaign/evidence/Records.h"
#include "rig/campaign/execution/CaseRun.h"

namespace rig::campaign {

/// Runs all planned cases one after another and leaves the evidence in a folder. campaign.json is rewritten
/// before and after each case, or every few cases where that takes long, so that it is true even if the
/// campaign is cut short.
class Campaign {
 public:
    /// @param folder  exists and is empty
    /// @param record  everything except the run's results
    Campaign(Rig rig, std::string folder, CampaignRecord record);

    /// Takes a case that need not run again, before Run(). @param number  its place among the cases, from 0
    void Take(std::size_t number, FinishedCase finished);

    /// Throws std::runtime_error when evidence cannot be written.
    /// @return the outcome that decides for all
    Outcome Run();

    /// Tries random sequences of faults instead, until the limit: what fails is repeated, made as small as it
    /// still fails, and kept with its evidence (search.json, and a case for each finding).
    /// @param dialect  1, 2, or 0 for both
    Outcome Search(const SearchLimit& limit, int dialect);

 private:
    bool Fails(const Sequence& sequence, const std::string& id, CaseRecord& record);
    SearchFinding Find(const Sequence& sequence, std::size_t number, CaseRecord& record);
    void KeepFinding(const SearchFinding& finding, CaseRecord record);
    void RunCase(CaseRecord& record);
    void NoteCleanExport(const CaseRecord& record);
    void KeepResult(const CaseRecord& record, const CaseRun& run);
    void TellLast(const CaseRun& next);
    void FindKnownUnseen();
    void WriteInTime();

    Rig rig_;
    std::string folder_;
    Descriptor hold_;  // of the folder
    CampaignRecord record_;
    Interrupts interrupts_;
    Display display_;
    std::vector<SearchFinding> findings_;
    std::size_t unjudged_ = 0;       // plays of a search that were neither passed nor failed
    Outcome worst_ = Outcome::Pass;  // of these
    std::set<int> failedClean_;      // dialects whose first clean export did not pass
    double away_ = 0;                // seconds that the last case told the DVR to stay away
    Clock::time_point nextWrite_;    // of the reports of all cases
    std::unique_ptr<CaseRun> last_;
    result::Result result_;
};

}  // namespace rig::campaign
