#include "tests/rig/history/MadeUpCourse.h"

#include <utility>

#include "tests/rig/diff/MadeUp.h"

using namespace rig::history;

CampaignDigest DayOf(int day, rig::diff::Campaign campaign) {
    static Texts texts;
    campaign.folder = "day" + std::to_string(day);
    campaign.begin = day;
    campaign.seed = 1;
    campaign.fingerprint = static_cast<std::size_t>(day);
    return DigestOf(std::move(campaign), texts);
}

CampaignDigest DayWith(int day, const std::string& note, std::vector<rig::diff::CaseRun> runs) {
    rig::diff::Campaign campaign = CampaignOf(std::move(runs));
    campaign.note = note;
    return DayOf(day, std::move(campaign));
}

rig::diff::CaseRun RunChecked(const std::string& verdict, const std::string& found) {
    rig::diff::CaseRun run = RunThat(verdict);
    run.hasPage = true;
    run.checks.emplace_back("event-list.source", rig::diff::Check{verdict, found});
    return run;
}

History HistoryOfRuns(const std::vector<rig::diff::CaseRun>& runs) {
    std::vector<CampaignDigest> days;
    for (const rig::diff::CaseRun& run : runs) {
        const int day = static_cast<int>(days.size()) + 1;
        days.push_back(DayWith(day, "firmware " + std::to_string(day), {run}));
    }
    return HistoryOf(std::move(days), Order::Time);
}
