#pragma once

#include <string>
#include <vector>

#include "rig/campaign/Display.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/DvrMessages.h"
#include "rig/campaign/evidence/Records.h"
#include "rig/campaign/execution/Hooks.h"
#include "rig/campaign/execution/Interrupts.h"
#include "rig/campaign/execution/Rig.h"

namespace rig::campaign {

/// Runs one case: hooks, export, verdict, evidence.
class CaseRun {
 public:
    /// @param record  of the case to run; filled in
    CaseRun(const Rig& rig, const CaseFolder& folder, CaseRecord& record, Interrupts& interrupts,
            Display& display);

    /// Throws std::runtime_error when evidence cannot be written.
    void Run();

    /// @return the judge's result plus the case's outcome as a check; only that check where there was nothing
    /// to judge. Includes steps and log.
    const result::RunResult& Result() const { return result_; }

    /// @return what the DVR sent
    const std::vector<DvrMessage>& Messages() const { return messages_; }

 private:
    CaseFacts Play();
    void TakeVerdict(result::Result result, CaseFacts& facts);
    void Exclude();
    void AskWhetherAlive(Hooks& hooks);
    void TakeHooks(const Hooks& hooks);
    void WriteEvidence(const CaseFacts& facts);

    const Rig& rig_;
    const CaseFolder& folder_;
    CaseRecord& record_;
    Interrupts& interrupts_;
    Display& display_;

    result::RunResult result_;
    std::vector<DvrMessage> messages_;
};

}  // namespace rig::campaign
