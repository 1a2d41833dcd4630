#include "rig/campaign/evidence/Records.h"

#include <algorithm>
#include <chrono>

namespace rig::campaign {
namespace {

void AddReaction(Spread& spread, const result::Timing& timing) {
    const auto found =
        std::find_if(spread.reactions.begin(), spread.reactions.end(),
                     [&timing](const Spread::Reaction& one) { return one.request == timing.request; });
    if (found == spread.reactions.end()) {
        spread.reactions.push_back({timing.request, timing.median, timing.median, timing.longest});
    } else {
        found->least = std::min(found->least, timing.median);
        found->most = std::max(found->most, timing.median);
        found->longest = std::max(found->longest, timing.longest);
    }
}

void AddRun(Spread& spread, const CaseRecord& run) {
    ++spread.outcomes[NameOf(run.outcome)];
    spread.durations.insert(
        std::upper_bound(spread.durations.begin(), spread.durations.end(), run.times.duration),
        run.times.duration);
    for (const result::Timing& timing : run.timings) {
        AddReaction(spread, timing);
    }
}

bool HasRun(const CaseRecord& record) {
    return record.outcome != Outcome::NotRun && record.outcome != Outcome::Running;
}

}  // namespace

bool CampaignRecord::HasOneSeed() const {
    return !merged || std::all_of(merged->parts.begin(), merged->parts.end(),
                                  [this](const PartRecord& part) { return part.seed == seed; });
}

Outcome CampaignRecord::Whole() const {
    if (state == "interrupted") {
        return Outcome::Interrupted;
    }
    Outcome worst = cases.empty() ? Outcome::NotRun : Outcome::Pass;
    for (const CaseRecord& one : cases) {
        worst = Worse(worst, one.outcome);
    }
    return knownUnseen.empty() ? worst : Worse(worst, Outcome::Fail);
}

std::map<std::string, int> CampaignRecord::Counts() const {
    std::map<std::string, int> counts;
    for (const CaseRecord& one : cases) {
        ++counts[NameOf(one.outcome)];
    }
    return counts;
}

std::vector<Spread> CampaignRecord::Spreads() const {
    std::vector<Spread> spreads;
    for (const CaseRecord& one : cases) {
        if (repeat < 2 || !HasRun(one)) {
            continue;
        }
        if (spreads.empty() || spreads.back().name != one.plan.name) {
            spreads.push_back({one.plan.name, {}, {}, {}});
        }
        AddRun(spreads.back(), one);
    }
    return spreads;
}

CaseTimes& CaseTimes::operator+=(const CaseTimes& other) {
    waited += other.waited;
    duration += other.duration;
    pauses += other.pauses;
    dvr += other.dvr;
    lingered += other.lingered;
    overhead += other.overhead;
    hooks += other.hooks;
    return *this;
}

CaseTimes CampaignRecord::Times() const {
    CaseTimes sum;
    for (const CaseRecord& one : cases) {
        sum += one.times;
    }
    return sum;
}

std::int64_t Now() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

}  // namespace rig::campaign
