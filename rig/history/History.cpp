#include "rig/history/History.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "rig/base/Counted.h"
#include "rig/diff/Severity.h"
#include "rig/history/Order.h"
#include "rig/result/Result.h"

namespace rig::history {
namespace {

constexpr std::size_t kMostCases = 100;

bool IsBefore(const diff::Campaign& one, const diff::Campaign& other, Order order) {
    if (order == Order::Note && one.note != other.note) {
        return IsNaturallyBefore(one.note, other.note);
    }
    return std::tie(one.begin, one.folder) < std::tie(other.begin, other.folder);
}

bool IsCopy(const diff::Campaign& one, const diff::Campaign& other) {
    return one.begin == other.begin && one.fingerprint == other.fingerprint;
}

bool IsPartOf(const diff::Campaign& one, const diff::Campaign& merged) {
    return std::any_of(merged.parts.begin(), merged.parts.end(), [&one](const diff::Identity& part) {
        return part.begin == one.begin && part.seed == one.seed && part.note == one.note;
    });
}

/// @return why the campaign does not count beside the others; empty if it does
std::string ReasonToLeaveOut(const std::vector<CampaignDigest>& campaigns,
                             const std::vector<std::filesystem::path>& places, std::size_t index) {
    const diff::Campaign& one = campaigns[index].facts;
    for (std::size_t other = 0; other < campaigns.size(); ++other) {
        const diff::Campaign& facts = campaigns[other].facts;
        if (other < index && places[other] == places[index]) {
            return "given twice, counted once";
        }
        if (other < index && IsCopy(one, facts)) {
            return "a copy of " + facts.folder + ", counted once";
        }
        // Two may hold each other: merged from the same parts. Then the first counts.
        if (other != index && IsPartOf(one, facts) && (other < index || !IsPartOf(facts, one))) {
            return "a part of " + facts.folder + ", counted there";
        }
    }
    return "";
}

void LeaveOut(std::vector<CampaignDigest>& campaigns, std::vector<LeftOut>& leftOut) {
    std::vector<std::filesystem::path> places;
    for (const CampaignDigest& campaign : campaigns) {
        std::error_code unknown;
        places.push_back(std::filesystem::weakly_canonical(campaign.facts.folder, unknown));
    }
    std::vector<CampaignDigest> kept;
    std::vector<LeftOut> others;
    for (std::size_t index = 0; index < campaigns.size(); ++index) {
        others.push_back({campaigns[index].facts.folder, ReasonToLeaveOut(campaigns, places, index)});
    }
    for (std::size_t index = 0; index < campaigns.size(); ++index) {
        if (others[index].reason.empty()) {
            kept.push_back(std::move(campaigns[index]));
        } else {
            leftOut.push_back(std::move(others[index]));
        }
    }
    campaigns = std::move(kept);
}

std::vector<std::string> OtherVersions(const diff::Campaign& one, const diff::Campaign& before) {
    std::vector<std::string> names;
    for (const auto& [name, version] : one.versions) {
        const auto was = before.versions.find(name);
        if (was == before.versions.end() || was->second != version) {
            names.push_back(name);
        }
    }
    return names;
}

/// Moves each case's digest to the course of that case.
std::vector<CaseCourse> CoursesOf(std::vector<CampaignDigest>& campaigns) {
    std::vector<CaseCourse> courses;
    std::unordered_map<Text, std::size_t> places;
    for (auto campaign = campaigns.rbegin(); campaign != campaigns.rend(); ++campaign) {
        for (const CaseDigest& one : campaign->cases) {
            if (places.try_emplace(one.name, courses.size()).second) {
                courses.push_back({one.name, one.switches, {}});
            }
        }
    }
    for (std::size_t build = 0; build < campaigns.size(); ++build) {
        for (CaseDigest& one : campaigns[build].cases) {
            std::vector<Cell>& cells = courses[places.at(one.name)].cells;
            cells.push_back({build, std::move(one)});
        }
        std::vector<CaseDigest>().swap(campaigns[build].cases);
    }
    return courses;
}

std::vector<Build> BuildsOf(const std::vector<CampaignDigest>& campaigns) {
    std::vector<Build> builds;
    for (const CampaignDigest& campaign : campaigns) {
        Build build{campaign.facts, 0, campaign.cases.size(), {}};
        build.passed = static_cast<std::size_t>(
            std::count_if(campaign.cases.begin(), campaign.cases.end(),
                          [](const CaseDigest& one) { return diff::IsPass(*one.worst); }));
        if (!builds.empty()) {
            build.otherVersions = OtherVersions(campaign.facts, builds.back().facts);
        }
        builds.push_back(std::move(build));
    }
    return builds;
}

}  // namespace

std::string Build::Name() const {
    return facts.note.empty() ? result::Date(facts.begin) : facts.note;
}

std::string Build::Remarks() const {
    std::vector<std::string> remarks;
    if (!facts.shard.empty()) {
        remarks.push_back("part " + facts.shard);
    }
    if (!facts.parts.empty()) {
        remarks.push_back("merged of " + Counted(facts.parts.size(), "part"));
    }
    if (facts.state == "running") {
        remarks.emplace_back("still running, or killed");
    } else if (facts.state != "finished") {
        remarks.push_back(facts.state);
    }
    return fmt::format("{}", fmt::join(remarks, ", "));
}

bool CaseCourse::HasAlwaysPassed() const {
    return std::all_of(cells.begin(), cells.end(),
                       [](const Cell& cell) { return diff::IsPass(*cell.digest.worst); });
}

std::string History::Words() const {
    const auto marked = static_cast<std::size_t>(
        std::count_if(reactions.begin(), reactions.end(),
                      [](const ReactionCourse& course) { return !course.marks.empty(); }));
    return fmt::format("{}: {} now, {} unsteady, {} left their spread", Counted(builds.size(), "campaign"),
                       Counted(failures.size(), "failure"), Counted(unsteady.size(), "case"),
                       Counted(marked, "reaction time"));
}

std::vector<const CaseCourse*> History::CasesToShow() const {
    std::vector<const CaseCourse*> shown;
    for (const CaseCourse& one : cases) {
        if (cases.size() <= kMostCases || !one.HasAlwaysPassed()) {
            shown.push_back(&one);
        }
    }
    return shown;
}

History HistoryOf(std::vector<CampaignDigest> campaigns, Order order, std::vector<LeftOut> leftOut) {
    History history;
    history.order = order;
    history.leftOut = std::move(leftOut);
    LeaveOut(campaigns, history.leftOut);
    std::stable_sort(campaigns.begin(), campaigns.end(),
                     [order](const CampaignDigest& one, const CampaignDigest& other) {
                         return IsBefore(one.facts, other.facts, order);
                     });
    history.builds = BuildsOf(campaigns);
    history.cases = CoursesOf(campaigns);
    history.failures = FailuresIn(history.cases);
    history.unsteady = UnsteadyIn(history.cases, history.builds);
    history.reactions = ReactionsIn(history.cases);
    return history;
}

}  // namespace rig::history
