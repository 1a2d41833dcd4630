#include "rig/judge/checks/Checks.h"

#include "rig/judge/wire/WireFacts.h"

namespace rig::judge {
namespace {

bool IsIncomplete(const Run& run) {
    return !run.hasStart || run.damaged.Any();
}

bool IsAskedFor(const Check& check, const Run& run, const Limits& limits) {
    switch (check.needs) {
        case Needs::MaxReaction:
            return limits.maxReaction.has_value();
        case Needs::Delivered:
            return run.delivery != nullptr;
        case Needs::Wire:
            return run.wire != nullptr;
        case Needs::WireTimes:
            return run.wire != nullptr && limits.maxReaction;
        default:
            return true;
    }
}

/// @return whether what the harness logs may come of a fault of the proxy
bool IsExcused(const Check& check, const Run& run) {
    const bool isOfWire = check.needs == Needs::Wire || check.needs == Needs::WireTimes;
    return !isOfWire && run.wire != nullptr && run.wire->isDisturbed;
}

bool IsHeldAgainst(const Finding& finding) {
    return finding.verdict == result::Verdict::Fail || finding.verdict == result::Verdict::Warning;
}

/// @return whether what proves a failure comes before what the judge misread
bool IsProvedBefore(const Finding& finding, const Run& run) {
    const std::vector<result::Evidence> lines = finding.evidence.Lines();
    return !lines.empty() && run.lines->IsBefore(lines.front(), run.misread.Lines().front());
}

bool MayBeMisread(const Finding& finding, const Run& run, Needs needs) {
    return run.misread.Any() &&
           (needs == Needs::OwnReading || (needs == Needs::WholeLog && !IsProvedBefore(finding, run)));
}

/// @return the verdict of one check, as far as the log is whole and understood, and the user is strict
Finding Judged(const Check& check, const Run& run, const Limits& limits) {
    Finding finding = check.judge(run, limits);
    if (check.needs == Needs::WholeLog && IsHeldAgainst(finding) && IsIncomplete(run)) {
        finding.verdict = result::Verdict::Inconclusive;
        finding.found = "the log does not hold all of the run; as far as it goes, " + finding.found.Whole();
    } else if (IsHeldAgainst(finding) && MayBeMisread(finding, run, check.needs)) {
        finding.verdict = result::Verdict::Inconclusive;
        finding.found =
            "the judge misread what the harness asked for (see log.understood); as it reads it, " +
            finding.found.Whole();
    }
    if (finding.verdict == result::Verdict::Warning && limits.isStrict) {
        finding.verdict = result::Verdict::Fail;
        finding.expected = finding.expected.Whole() + " (else a warning, which --strict makes a failure)";
    }
    if (finding.verdict == result::Verdict::Fail && IsExcused(check, run)) {
        finding.verdict = result::Verdict::Inconclusive;
        finding.found =
            "a fault of the proxy may be to blame; as far as the log goes, " + finding.found.Whole();
    }
    return finding;
}

}  // namespace

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> kChecks = [] {
        std::vector<Check> all;
        for (const auto* table : {&ConnectionChecks(), &MessageChecks(), &ExportChecks(), &FaultChecks(),
                                  &SwitchChecks(), &TimingChecks(), &DeliveryChecks(), &WireChecks()}) {
            all.insert(all.end(), table->begin(), table->end());
        }
        return all;
    }();
    return kChecks;
}

bool IsOptional(const Check& check) {
    return check.needs != Needs::Nothing && check.needs != Needs::WholeLog &&
           check.needs != Needs::OwnReading;
}

Listing ListChecks() {
    Listing listing{{"check", "requirement", "what in the log proves it"}, {}};
    for (const Check& check : AllChecks()) {
        listing.rows.push_back({check.id, check.requirement, check.proof});
    }
    return listing;
}

std::vector<result::CheckResult> JudgeRun(const Run& run, const Limits& limits, bool words) {
    std::vector<result::CheckResult> results;
    results.reserve(AllChecks().size());
    for (const Check& check : AllChecks()) {
        if (!IsAskedFor(check, run, limits) || !check.applies(run)) {
            continue;
        }
        Finding finding = Judged(check, run, limits);
        result::CheckResult& judged = results.emplace_back();
        judged.id = check.id;
        judged.verdict = finding.verdict;
        if (words || result::NeedsWords(finding.verdict)) {
            judged.requirement = check.requirement;
            judged.expected = finding.expected.Whole();
            judged.found = finding.found.Whole();
            judged.evidence = finding.evidence.Lines();
        }
    }
    return results;
}

}  // namespace rig::judge
