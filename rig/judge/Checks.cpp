#include "rig/judge/Checks.h"

namespace rig::judge {

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> kChecks = [] {
        std::vector<Check> all;
        for (const auto* table : {&ConnectionChecks(), &MessageChecks(), &ExportChecks(), &FaultChecks(),
                                  &SwitchChecks(), &TimingChecks()}) {
            all.insert(all.end(), table->begin(), table->end());
        }
        return all;
    }();
    return kChecks;
}

std::vector<report::CheckResult> JudgeRun(const Run& run, const Limits& limits) {
    std::vector<report::CheckResult> results;
    for (const Check& check : AllChecks()) {
        if (!check.applies(run) || (check.needsMaxReaction && !limits.maxReaction)) {
            continue;
        }
        Finding finding = check.judge(run, limits);
        results.push_back({check.id, check.requirement, finding.verdict, std::move(finding.expected),
                           std::move(finding.found), std::move(finding.evidence)});
    }
    return results;
}

}  // namespace rig::judge
