#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rig/campaign/CaseFolder.h"
#include "rig/campaign/Interrupts.h"
#include "rig/campaign/Records.h"

namespace rig::campaign {

/// Commands of the user around each case; empty where not given.
struct HookCommands {
    std::string beforeCase;
    std::string afterCase;
    std::string alive;
    std::string powerCycle;
    double timeout = 120;  // seconds for each
};

/// Runs the hooks of one case. They see VELLORAN_CASE, VELLORAN_CASE_DIR (absolute), VELLORAN_OUTCOME behind
/// the case; what they print goes to hooks.log in the case's folder.
/// An interrupt ends the hook that runs, and none is started behind it.
class Hooks {
 public:
    Hooks(const HookCommands& commands, const CaseFolder& folder, const std::string& name,
          Interrupts& interrupts);

    /// What the DVR's --alive came to.
    enum class Life { Alive, Revived, Dead };

    /// @return what went wrong, in words; empty where nothing did or there is no such hook
    std::string BeforeCase();
    std::string AfterCase(const std::string& outcome);

    /// Asks whether the DVR lives; where it does not, and there is a --power-cycle, once more behind that.
    /// @param words  what went wrong, unless it is alive
    Life Alive(const std::string& outcome, std::string& words);

    const std::vector<HookRecord>& Records() const { return records_; }

 private:
    std::string Run(const std::string& hook, const std::string& command);
    std::optional<Ending> RunWithin(const std::string& command) const;

    HookCommands commands_;
    const CaseFolder& folder_;
    std::string name_;
    std::string outcome_;
    Interrupts& interrupts_;
    std::vector<HookRecord> records_;
};

}  // namespace rig::campaign
