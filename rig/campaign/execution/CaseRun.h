#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rig/base/Interrupts.h"
#include "rig/campaign/Display.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/DvrMessages.h"
#include "rig/campaign/evidence/Records.h"
#include "rig/campaign/execution/Export.h"
#include "rig/campaign/execution/Hooks.h"
#include "rig/campaign/execution/Rig.h"

namespace rig::campaign {

/// Runs one case: hooks, export, verdict, evidence.
class CaseRun {
 public:
    /// @param record  of the case to run; filled in
    CaseRun(Rig rig, const CaseFolder& folder, CaseRecord& record, Interrupts& interrupts, Display& display);

    /// Throws std::runtime_error when evidence cannot be written.
    void Run();

    const CaseRecord& Record() const { return record_; }

    /// @return the judge's result plus the case's outcome as a check; only that check where there was nothing
    /// to judge. Includes steps and log.
    const result::RunResult& Result() const { return result_; }

    /// @return what the DVR sent
    const std::vector<DvrMessage>& Messages() const { return messages_; }

    /// @return when the DVR connected, and when DONE went out; nothing if that did not happen
    std::optional<Clock::time_point> ConnectedAt() const { return connected_; }
    std::optional<Clock::time_point> DoneAt() const { return done_; }

    /// A later case has shown that the DVR called next so many seconds after DONE: judges the log anew and
    /// writes the evidence again. @return whether the case's outcome is another
    bool TakeNextCall(double seconds);

 private:
    void Play();
    void PlayFault();
    void Recover(std::unique_ptr<Child> dvr);
    void Take(const Export& played);
    void TakeVerdict(result::Result result);
    void TakeDecision();
    void Exclude();
    void AskWhetherAlive(Hooks& hooks);
    void TakeHooks(const Hooks& hooks);
    void WriteEvidence();

    const Rig rig_;
    const CaseFolder folder_;
    CaseRecord& record_;
    Interrupts& interrupts_;
    Display& display_;

    CaseFacts facts_;
    std::optional<Clock::time_point> connected_;
    std::optional<Clock::time_point> done_;
    result::RunResult result_;
    std::vector<DvrMessage> messages_;
};

}  // namespace rig::campaign
