#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

bool IsIncomplete(const Run& run) {
    return !run.hasStart || run.damaged.Any();
}

/// @return whether what proves a failure comes before what the judge misread
bool IsProvedBefore(const result::Evidence& misread, const Finding& finding) {
    return !finding.evidence.empty() && finding.evidence.front().file == misread.file &&
           finding.evidence.front().line < misread.line;
}

/// A failure that may only follow from what the log lacks, or from what the judge misread, is none.
void Weigh(Finding& finding, const Run& run, Needs needs) {
    if (finding.verdict != result::Verdict::Fail) {
        return;
    }
    const bool mayBeMisread =
        run.misread.Any() &&
        (needs == Needs::OwnReading ||
         (needs == Needs::WholeLog && !IsProvedBefore(run.misread.Lines().front(), finding)));
    std::string reason;
    if (needs == Needs::WholeLog && IsIncomplete(run)) {
        reason = "the log does not hold all of the run; as far as it goes, ";
    } else if (mayBeMisread) {
        reason = "the judge misread what the harness asked for (see log.understood); as it reads it, ";
    } else {
        return;
    }
    finding.verdict = result::Verdict::Inconclusive;
    finding.found = reason + finding.found;
}

}  // namespace

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
        if (!check.applies(run) || (check.needs == Needs::MaxReaction && !limits.maxReaction)) {
            continue;
        }
        Finding finding = check.judge(run, limits);
        Weigh(finding, run, check.needs);
        results.push_back({check.id, check.requirement, finding.verdict, std::move(finding.expected),
                           std::move(finding.found), std::move(finding.evidence)});
    }
    return results;
}

}  // namespace rig::judge
