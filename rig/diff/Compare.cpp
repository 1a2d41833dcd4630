#include "rig/diff/Compare.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>

#include "rig/base/Counted.h"
#include "rig/diff/Severity.h"
#include "rig/result/Result.h"

namespace rig::diff {
namespace {

/// What all runs of a case say about one thing.
struct Verdicts {
    std::string worst;
    std::size_t count = 0;  // of runs that say so
    std::size_t runs = 0;
    std::set<std::string> found;  // by these

    void Add(const Check& check) {
        ++runs;
        if (worst.empty() || Severity(check.verdict) > Severity(worst)) {
            worst = check.verdict;
            count = 0;
            found.clear();
        }
        if (check.verdict == worst) {
            ++count;
            found.insert(check.found);
        }
    }

    std::string Words() const {
        const std::string how = runs > 1 ? fmt::format("{} in {} of {} runs", worst, count, runs) : worst;
        return found.begin()->empty() ? how : how + ": " + *found.begin();
    }
};

const Check* CheckOf(const CaseRun& run, const std::string& id) {
    const auto place = std::find_if(run.checks.begin(), run.checks.end(),
                                    [&id](const auto& check) { return check.first == id; });
    return place == run.checks.end() ? nullptr : &place->second;
}

std::optional<Verdicts> VerdictsOf(const Case& all, const std::string& id) {
    std::optional<Verdicts> verdicts;
    for (const CaseRun& run : all.runs) {
        if (const Check* const check = CheckOf(run, id)) {
            verdicts = verdicts.value_or(Verdicts());
            verdicts->Add(*check);
        }
    }
    return verdicts;
}

Verdicts OutcomesOf(const Case& all) {
    Verdicts outcomes;
    for (const CaseRun& run : all.runs) {
        outcomes.Add({run.outcome, run.reason});
    }
    return outcomes;
}

std::set<std::string> WithoutDetails(const std::set<std::string>& all) {
    std::set<std::string> reasons;
    for (const std::string& found : all) {
        reasons.emplace(result::WithoutDetails(found));
    }
    return reasons;
}

/// @return whether the same verdict now has another reason. What a pass found is not a reason.
bool HasOtherReason(const Verdicts& before, const Verdicts& after) {
    const std::set<std::string> then = WithoutDetails(before.found);
    const std::set<std::string> now = WithoutDetails(after.found);
    return !IsPass(after.worst) && std::none_of(now.begin(), now.end(), [&then](const std::string& reason) {
        return then.count(reason) > 0;
    });
}

void CompareVerdicts(const std::string& subject, const Verdicts& before, const Verdicts& after,
                     std::vector<Difference>& differences) {
    if (before.worst != after.worst || HasOtherReason(before, after)) {
        differences.push_back({ChangeOf(before.worst, after.worst), subject, before.Words(), after.Words()});
    }
}

/// @return the checks of all runs, each once, in the judge's order
std::vector<std::string> ChecksOf(const Case& all) {
    std::vector<std::string> ids;
    for (const CaseRun& run : all.runs) {
        for (const auto& [id, check] : run.checks) {
            if (std::find(ids.begin(), ids.end(), id) == ids.end()) {
                ids.push_back(id);
            }
        }
    }
    return ids;
}

/// A check that one of them lacks says something about the judge, not the DVR.
void CompareChecks(const Case& before, const Case& after, std::vector<Difference>& differences) {
    for (const std::string& id : ChecksOf(after)) {
        const std::optional<Verdicts> was = VerdictsOf(before, id);
        const std::optional<Verdicts> is = VerdictsOf(after, id);
        if (was && is) {
            CompareVerdicts("check " + id, *was, *is, differences);
        }
    }
}

Change WorstOf(const std::vector<Difference>& differences) {
    Change worst = Change::Same;
    for (const Difference& difference : differences) {
        worst = std::max(worst, difference.change);
    }
    return worst;
}

CaseComparison CompareCase(const Case& before, const Case& after) {
    CaseComparison compared{after.name, after.switches, Change::Same, {}, &before, &after};
    CompareVerdicts("outcome", OutcomesOf(before), OutcomesOf(after), compared.differences);
    CompareChecks(before, after, compared.differences);
    CompareMessages(before, after, compared.differences);
    CompareReactions(before, after, compared.differences);
    compared.change = WorstOf(compared.differences);
    return compared;
}

/// A case that passed but is gone no longer proves anything.
CaseComparison Missing(const Case& before) {
    const Verdicts outcomes = OutcomesOf(before);
    const Change change = IsPass(outcomes.worst) ? Change::Worse : Change::Changed;
    return {before.name, before.switches, change, {{change, "outcome", outcomes.Words(), "no such case"}},
            &before,     nullptr};
}

CaseComparison Added(const Case& after) {
    return {after.name,      after.switches,
            Change::Changed, {{Change::Changed, "outcome", "no such case", OutcomesOf(after).Words()}},
            nullptr,         &after};
}

std::string VersionOf(const Campaign& campaign, const std::string& name) {
    const auto place = campaign.versions.find(name);
    return place == campaign.versions.end() ? "not known" : place->second;
}

std::string PartOf(const Campaign& campaign) {
    return campaign.shard.empty() ? "the whole" : campaign.shard;
}

std::vector<Difference> CompareSurroundings(const Campaign& before, const Campaign& after) {
    std::map<std::string, std::string> all = before.versions;
    all.insert(after.versions.begin(), after.versions.end());
    std::vector<Difference> differences;
    for (const auto& [name, unused] : all) {
        const std::string was = VersionOf(before, name);
        const std::string is = VersionOf(after, name);
        if (was != is) {
            differences.push_back({Change::Changed, name, was, is});
        }
    }
    if (before.shard != after.shard) {
        differences.push_back({Change::Changed, "part", PartOf(before), PartOf(after)});
    }
    return differences;
}

const Case* Find(const Campaign& campaign, const std::string& name) {
    const auto place = std::find_if(campaign.cases.begin(), campaign.cases.end(),
                                    [&name](const Case& one) { return one.name == name; });
    return place == campaign.cases.end() ? nullptr : &*place;
}

}  // namespace

const char* NameOf(Change change) {
    static constexpr const char* kNames[] = {"same", "changed", "better", "worse"};
    return kNames[static_cast<std::size_t>(change)];
}

Change ChangeOf(const std::string& before, const std::string& after) {
    if (before == after) {
        return Change::Changed;  // for another reason
    }
    if (IsPass(after) || (IsFailure(before) && IsWarning(after))) {
        return Change::Better;
    }
    const bool isNewFailure = IsFailure(after) && !IsFailure(before);
    return IsPass(before) || isNewFailure ? Change::Worse : Change::Changed;
}

std::size_t Comparison::Count(Change change) const {
    return static_cast<std::size_t>(std::count_if(
        cases.begin(), cases.end(), [change](const CaseComparison& one) { return one.change == change; }));
}

std::string Comparison::Words() const {
    return fmt::format("{} worse, {} better, {} changed, {} the same", Counted(Count(Change::Worse), "case"),
                       Count(Change::Better), Count(Change::Changed), Count(Change::Same));
}

Comparison Compare(const Campaign& before, const Campaign& after) {
    Comparison comparison{&before, &after, CompareSurroundings(before, after), {}};
    for (const Case& is : after.cases) {
        const Case* const was = Find(before, is.name);
        comparison.cases.push_back(was ? CompareCase(*was, is) : Added(is));
    }
    for (const Case& was : before.cases) {
        if (!Find(after, was.name)) {
            comparison.cases.push_back(Missing(was));
        }
    }
    return comparison;
}

}  // namespace rig::diff
