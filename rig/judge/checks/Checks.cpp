#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

bool IsIncomplete(const Run& run) {
    return !run.hasStart || run.damaged.Any();
}

bool IsAskedFor(const Check& check, const Run& run, const Limits& limits) {
    return (check.needs != Needs::MaxReaction || limits.maxReaction) &&
           (check.needs != Needs::Delivered || run.delivery != nullptr);
}

}  // namespace

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> kChecks = [] {
        std::vector<Check> all;
        for (const auto* table : {&ConnectionChecks(), &MessageChecks(), &ExportChecks(), &FaultChecks(),
                                  &SwitchChecks(), &TimingChecks(), &DeliveryChecks()}) {
            all.insert(all.end(), table->begin(), table->end());
        }
        return all;
    }();
    return kChecks;
}

Listing ListChecks() {
    Listing listing{{"check", "requirement", "what in the log proves it"}, {}};
    for (const Check& check : AllChecks()) {
        listing.rows.push_back({check.id, check.requirement, check.proof});
    }
    return listing;
}

std::vector<result::CheckResult> JudgeRun(const Run& run, const Limits& limits) {
    std::vector<result::CheckResult> results;
    results.reserve(AllChecks().size());
    for (const Check& check : AllChecks()) {
        if (!IsAskedFor(check, run, limits) || !check.applies(run)) {
            continue;
        }
        Finding finding = check.judge(run, limits);
        if (check.needs == Needs::WholeLog && finding.verdict == result::Verdict::Fail && IsIncomplete(run)) {
            finding.verdict = result::Verdict::Inconclusive;
            finding.found = "the log does not hold all of the run; as far as it goes, " + finding.found;
        }
        results.push_back({check.id, check.requirement, finding.verdict, std::move(finding.expected),
                           std::move(finding.found), std::move(finding.evidence)});
    }
    return results;
}

}  // namespace rig::judge
