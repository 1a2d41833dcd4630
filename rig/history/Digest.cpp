#include "rig/history/Digest.h"

#include <algorithm>
#include <map>
#include <utility>

#include "rig/base/Holds.h"
#include "rig/diff/Severity.h"

namespace rig::history {
namespace {

bool HasPassed(const std::string& verdict) {
    return diff::IsPass(verdict) || diff::IsWarning(verdict);
}

/// Of several runs of a case, one that failed decides, else one that passed.
void AddCheck(const std::string& id, const diff::Check& check, Texts& texts,
              std::vector<CheckDigest>& checks) {
    const bool hasFailed = HasFailed(check.verdict);
    if (!hasFailed && !HasPassed(check.verdict)) {
        return;
    }
    const CheckDigest digest{texts.Keep(id), texts.Keep(check.verdict),
                             hasFailed ? texts.Keep(check.found) : nullptr};
    const auto place = std::find_if(checks.begin(), checks.end(),
                                    [&digest](const CheckDigest& one) { return one.id == digest.id; });
    if (place == checks.end()) {
        checks.push_back(digest);
    } else if (diff::Severity(check.verdict) > diff::Severity(*place->verdict)) {
        *place = digest;
    }
}

double MedianOf(std::vector<double> numbers) {
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    std::nth_element(numbers.begin(), middle, numbers.end());
    return *middle;
}

void AddReactions(const diff::Case& all, Texts& texts, std::vector<ReactionDigest>& reactions) {
    std::map<std::string, std::vector<double>> medians;
    for (const diff::CaseRun& run : all.runs) {
        for (const auto& [request, reaction] : run.reactions) {
            medians[request].push_back(reaction.median);
        }
    }
    for (const auto& [request, span] : diff::SpansOf(all)) {
        reactions.push_back({texts.Keep(request), MedianOf(medians.at(request)), span});
    }
}

CaseDigest CaseDigestOf(const diff::Case& all, Texts& texts) {
    CaseDigest digest;
    digest.name = texts.Keep(all.name);
    digest.switches = texts.Keep(all.switches);
    const auto worst = std::max_element(
        all.runs.begin(), all.runs.end(), [](const diff::CaseRun& one, const diff::CaseRun& other) {
            return diff::Severity(one.outcome) < diff::Severity(other.outcome);
        });
    digest.worst = texts.Keep(worst->outcome);
    digest.folder = worst->folder;
    digest.hasPage = worst->hasPage;
    for (const diff::CaseRun& run : all.runs) {
        digest.outcomes.push_back(texts.Keep(run.outcome));
        for (const auto& [id, check] : run.checks) {
            AddCheck(id, check, texts, digest.checks);
        }
    }
    digest.worstCount =
        static_cast<std::size_t>(std::count(digest.outcomes.begin(), digest.outcomes.end(), digest.worst));
    AddReactions(all, texts, digest.reactions);
    return digest;
}

}  // namespace

CampaignDigest DigestOf(diff::Campaign campaign, Texts& texts) {
    CampaignDigest digest;
    for (const diff::Case& one : campaign.cases) {
        digest.cases.push_back(CaseDigestOf(one, texts));
    }
    digest.facts = std::move(campaign);
    std::vector<diff::Case>().swap(digest.facts.cases);
    return digest;
}

bool HasFailed(const std::string& verdict) {
    return diff::IsFailure(verdict) || verdict == "KNOWN FAILURE";
}

bool TellsOfRecorder(const std::string& outcome) {
    return !Holds({"NOT RUN", "RUNNING", "INTERRUPTED", "ENVIRONMENT"}, outcome);
}

}  // namespace rig::history
