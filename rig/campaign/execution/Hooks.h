#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rig/base/Interrupts.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/Records.h"

namespace rig::campaign {

/// The user's commands around each case; empty if not given.
struct HookCommands {
    std::string beforeCase;
    std::string afterCase;
    std::string alive;
    std::string powerCycle;
    double timeout = 120;  // seconds for each
};

/// Runs the hooks of one case. They see VELLORAN_CASE, VELLORAN_CASE_DIR (absolute), VELLORAN_OUTCOME after
/// the case; what they print goes to hooks.log in the case's folder.
/// An interrupt ends the running hook, and no other is started after it.
class Hooks {
 public:
    Hooks(const HookCommands& commands, const CaseFolder& folder, const std::string& name,
          Interrupts& interrupts);

    /// What --alive said about the DVR.
    enum class Life { Alive, Revived, Dead };

    /// @return what went wrong, in words; empty if nothing did or there is no such hook
    std::string BeforeCase();
    std::string AfterCase(const std::string& outcome);

    /// Asks whether the DVR is alive; if not, and there is a --power-cycle, asks again after that.
    /// @param words  what went wrong, unless it is alive
    Life Alive(const std::string& outcome, std::string& words);

    const std::vector<HookRecord>& Records() const { return records_; }

 private:
    std::string Run(const std::string& hook, const std::string& command);
    std::optional<Ending> RunInTime(const std::string& command) const;

    HookCommands commands_;
    const CaseFolder& folder_;
    std::string name_;
    std::string outcome_;
    Interrupts& interrupts_;
    std::vector<HookRecord> records_;
};

}  // namespace rig::campaign
