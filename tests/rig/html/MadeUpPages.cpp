#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "rig/base/WriteWhole.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/fault/Cases.h"
#include "rig/judge/checks/Checks.h"

// Writes pages of made-up campaigns, with more of everything than a real one has, for a browser to open.

namespace rig::campaign {
namespace {

constexpr std::int64_t kBegin = 1'795'212'187'123'456;  // 2026-11-20T22:03:07Z
constexpr std::int64_t kCase = 9'700'000;               // microseconds
const std::string kLong = "a_word_" + std::string(200, 'x') + "_that_has_no_place_to_break";

result::Verdict VerdictIn(std::size_t number, std::size_t check) {
    const std::size_t kind = number * 7 + check * 3;
    return kind % 11 == 0 ? static_cast<result::Verdict>(kind % 7) : result::Verdict::Pass;
}

std::vector<result::CheckResult> Checks(std::size_t number) {
    std::vector<result::CheckResult> checks;
    for (const judge::Check& check : judge::AllChecks()) {
        checks.push_back({check.id, "", VerdictIn(number, checks.size()), "", "", {}});
    }
    return checks;
}

CaseRecord RecordOf(const Case& plan, std::size_t number) {
    CaseRecord record;
    record.plan = plan;
    record.id = plan.name;
    record.outcome = static_cast<Outcome>(number % 10);
    record.begin = kBegin + static_cast<std::int64_t>(number) * kCase;
    record.end = *record.begin + kCase;
    record.times.duration = 9.7;
    record.reason = record.outcome == Outcome::Pass
                        ? ""
                        : "event-list.source: EVENT_LIST without " + (number % 9 == 1 ? kLong : "source");
    record.isSuspect = number == 5;
    record.harness = {"velloran", Ending{44, std::nullopt}, "SIGINT"};
    record.dvr = ProcessRecord{"velloran-rig dvr", Ending{0, std::nullopt}, ""};
    record.files = {"case.json", "dvr.log", "harness.err", "harness.log", "report.html", "verdict.json"};
    record.checks = Checks(number);
    return record;
}

/// A coverage of each fault at each message, and of a few messages without.
void Cover(Coverage& coverage) {
    result::RunResult run;
    run.checks = {{"fault.acted", "", result::Verdict::Pass, "", "", {}}};
    for (const fault::FaultCase& fault : fault::Cases()) {
        coverage.Add(FaultCaseOf(fault), run, {{"FILE_COMPLETE", {"reid", "file"}}, {"OK", {}}});
    }
}

CampaignRecord Campaign() {
    CampaignRecord campaign;
    campaign.note = "firmware 7.1, " + kLong;
    campaign.begin = kBegin;
    campaign.seed = 7;
    campaign.versions = {{"velloran-rig", "0.1.0"}, {"system", kLong}};
    campaign.commands = {{"harness", "ssh rig /opt/" + kLong}};
    campaign.commandLine = {"velloran-rig", "run", "--note", campaign.note};
    for (const Case& plan : AllCases()) {
        campaign.cases.push_back(RecordOf(plan, campaign.cases.size()));
    }
    campaign.cases[1].id = campaign.cases[1].plan.name = kLong + "@GET_FILE-2.0";
    Cover(campaign.coverage);
    return campaign;
}

CampaignRecord Finished() {
    CampaignRecord campaign = Campaign();
    campaign.state = "finished";
    for (CaseRecord& record : campaign.cases) {
        const bool isOver = record.outcome != Outcome::Running && record.outcome != Outcome::Interrupted;
        record.outcome = isOver ? record.outcome : Outcome::Fail;
    }
    campaign.end = kBegin + static_cast<std::int64_t>(campaign.cases.size()) * kCase;
    campaign.knownUnseen = {"xfer.answer " + kLong};
    return campaign;
}

CampaignRecord Running() {
    CampaignRecord campaign = Campaign();
    for (std::size_t number = 12; number < campaign.cases.size(); ++number) {
        CaseRecord& record = campaign.cases[number];
        CaseRecord planned;
        planned.plan = record.plan;
        planned.id = record.id;
        record = planned;
    }
    campaign.cases[12].outcome = Outcome::Running;
    campaign.cases[12].begin = kBegin + 12 * kCase;
    return campaign;
}

PartRecord PartOf(std::uint32_t number, const std::string& note) {
    PartRecord part;
    part.folder = "lab/part-" + std::to_string(number);
    part.note = note;
    part.seed = number;
    part.versions = {{"host", "rig-" + std::to_string(number)}};
    part.shard = Shard{number, 2, "--shard"};
    part.state = number == 1 ? "finished" : "killed";
    part.begin = kBegin;
    return part;
}

CampaignRecord Merged() {
    CampaignRecord campaign = Finished();
    MergeRecord merged;
    merged.parts = {PartOf(1, "firmware 7.1"), PartOf(2, kLong)};
    merged.differences = {"their notes: firmware 7.1, " + kLong};
    merged.doubles = {campaign.cases[1].id};
    merged.missing = {campaign.cases[3].id};
    merged.others = {{campaign.cases[1].id, 2, Outcome::Pass, campaign.cases[1].Folder() + "/part-2"}};
    campaign.merged = merged;
    return campaign;
}

}  // namespace

void WritePages(const std::string& folder) {
    WriteWhole(folder + "/finished.html", CampaignPage(Finished()));
    WriteWhole(folder + "/merged.html", CampaignPage(Merged()));
    WriteWhole(folder + "/running.html", CampaignPage(Running()));
}

}  // namespace rig::campaign

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: velloran_made_up_pages FOLDER\n";
        return 64;
    }
    rig::campaign::WritePages(arguments[1]);
}
