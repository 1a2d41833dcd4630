#include "rig/merge/Merge.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

#include "rig/base/Affix.h"
#include "rig/base/Holds.h"
#include "rig/base/ParseNumber.h"
#include "rig/campaign/Plan.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/RecordReader.h"
#include "rig/campaign/execution/Harness.h"
#include "rig/judge/KnownFailures.h"
#include "rig/merge/Choice.h"
#include "rig/merge/Differences.h"
#include "rig/merge/RecordIn.h"

namespace rig::merge {
namespace {

namespace fs = std::filesystem;
using campaign::CampaignRecord;
using campaign::Case;
using campaign::CaseFolder;
using campaign::CaseRecord;
using campaign::MergeRecord;
using campaign::Outcome;
using Pairs = std::vector<std::pair<std::string, std::string>>;

/// Values that differ stand side by side.
void Join(std::string& text, const std::string& other) {
    if (text.empty()) {
        text = other;
    } else if (!other.empty() && ("; " + text + "; ").find("; " + other + "; ") == std::string::npos) {
        text += "; " + other;
    }
}

void Join(Pairs& pairs, const Pairs& others) {
    for (const auto& other : others) {
        const auto same = std::find_if(pairs.begin(), pairs.end(),
                                       [&](const auto& one) { return one.first == other.first; });
        if (same == pairs.end()) {
            pairs.push_back(other);
        } else {
            Join(same->second, other.second);
        }
    }
}

/// @return when the part ended; where it was killed, when its last case began or ended
std::optional<std::int64_t> EndOf(const Part& part) {
    std::optional<std::int64_t> end = part.record.end;
    if (part.IsCutShort()) {
        for (const CaseRecord& one : part.record.cases) {
            end = std::max({end, one.begin, one.end});
        }
    }
    return end;
}

void TakeSurroundings(CampaignRecord& record, const std::vector<Part>& parts) {
    record = parts.front().record;
    record.cases.clear();
    record.knownUnseen.clear();
    record.shard.reset();
    record.state = "finished";
    record.commandLine = campaign::OwnCommandLine();
    record.workingDirectory = fs::current_path();
    for (const Part& part : parts) {
        Join(record.note, part.record.note);
        Join(record.versions, part.record.versions);
        record.repeat = std::max(record.repeat, part.record.repeat);
        record.begin = std::min(record.begin, part.record.begin);
        record.end = std::max(record.end, EndOf(part));
    }
}

/// @return the case that no part has, as far as it follows from its id
CaseRecord Missing(const std::string& id) {
    CaseRecord record;
    record.id = id;
    record.reason = "no part has it";
    std::string name = id;
    if (!EndsWith(id, ".0")) {  // one of several runs
        const std::size_t dash = id.rfind('-');
        name = id.substr(0, dash);
        record.run = dash == std::string::npos ? 1 : ParseNumber<int>(id.substr(dash + 1)).value_or(1);
    }
    record.plan = PlanOf(name);
    return record;
}

/// @return the case for reports that know only checks, where nobody judged it
result::RunResult Unjudged(const CaseRecord& record) {
    result::RunResult run;
    run.name = record.id;
    run.switches = record.plan.switches;
    run.begin = record.begin;
    run.checks = {campaign::CheckOf({record.outcome, record.reason}, std::nullopt)};
    return run;
}

/// Takes what the judge said of it, and what it adds to the coverage.
result::RunResult Judged(const Part& part, CaseRecord& record, campaign::Coverage& coverage) {
    result::RunResult run = ReadCaseResult(part.folder, record);
    if (record.verdict) {
        coverage.Add(record.plan, run, MessagesIn(CaseFolder(part.folder + "/" + record.Folder())));
    }
    run.steps.clear();
    return run;
}

result::RunResult Killed(const Part& part, CaseRecord& record) {
    record.outcome = Outcome::Interrupted;
    record.reason = "its campaign was killed while it ran";
    record.files = CaseFolder(part.folder + "/" + record.Folder()).Files();
    result::RunResult run = Unjudged(record);
    record.checks = run.checks;
    return run;
}

result::RunResult Taken(const Part& part, CaseRecord& record, CampaignRecord& campaign) {
    if (!IsOver(record.outcome) && part.IsCutShort()) {
        campaign.state = "interrupted";
    }
    if (record.outcome == Outcome::NotRun) {
        record.reason = fmt::format("its campaign was {} before it", part.told.state);
        return Unjudged(record);
    }
    return Holds(record.files, "verdict.json") ? Judged(part, record, campaign.coverage)
                                               : Killed(part, record);
}

/// @return a name that the evidence of the case does not have yet
std::string PlaceOf(std::size_t part, const fs::path& chosen) {
    std::string name = fmt::format("part-{}", part);
    while (fs::exists(chosen / name)) {
        name += "~";
    }
    return name;
}

void TakeOthers(MergeRecord& merge, const std::vector<Part>& parts, const CaseRecord& record,
                std::size_t chosen) {
    bool isDouble = false;
    for (std::size_t at = 0; at < parts.size(); ++at) {
        const CaseRecord* const other = at == chosen ? nullptr : parts[at].Find(record.id);
        if (other == nullptr || other->outcome == Outcome::NotRun) {
            continue;
        }
        const std::string place = PlaceOf(at + 1, parts[chosen].folder + "/" + record.Folder());
        merge.others.push_back({record.id, at + 1, other->outcome, record.Folder() + "/" + place});
        isDouble = record.plan.role == Case::Role::Fault;
    }
    if (isDouble) {
        merge.doubles.push_back(record.id);
    }
}

/// What one part did not see, another may have.
void TakeKnown(Merged& merged, const std::vector<Part>& parts) {
    judge::KnownFailures known;
    for (const Part& part : parts) {
        const CampaignRecord& record = part.record;
        for (const std::string& id : record.shard ? record.shard->knownUnseen : record.knownUnseen) {
            known[id] = {"as the list says"};
        }
    }
    judge::KnownTally tally;
    for (const result::RunResult& run : merged.result.runs) {
        tally.Add(run);
    }
    result::RunResult unseen = tally.Unseen(known);
    for (const result::CheckResult& check : unseen.checks) {
        merged.record.knownUnseen.emplace_back(check.id);
    }
    if (!unseen.checks.empty()) {
        merged.result.runs.push_back(std::move(unseen));
    }
}

void TakeCase(Merged& merged, MergeRecord& merge, const std::vector<Part>& parts, const std::string& id) {
    const std::optional<std::size_t> chosen = ChosenOf(parts, id);
    CaseRecord record = chosen ? *parts[*chosen].Find(id) : Missing(id);
    merged.result.runs.push_back(chosen ? Taken(parts[*chosen], record, merged.record) : Unjudged(record));
    if (chosen) {
        TakeOthers(merge, parts, record, *chosen);
    }
    if (record.outcome == Outcome::NotRun) {
        merge.missing.push_back(id);
    }
    merged.parts.push_back(chosen);
    merged.record.cases.push_back(std::move(record));
}

}  // namespace

Merged Merge(const std::vector<Part>& parts) {
    Merged merged;
    TakeSurroundings(merged.record, parts);
    MergeRecord merge;
    std::transform(parts.begin(), parts.end(), std::back_inserter(merge.parts),
                   [](const Part& part) { return part.told; });
    merge.differences = DifferencesOf(parts);
    std::vector<std::vector<std::string>> planned;
    std::transform(parts.begin(), parts.end(), std::back_inserter(planned),
                   [](const Part& part) { return part.planned; });
    for (const std::string& id : Interleaved(planned)) {
        TakeCase(merged, merge, parts, id);
    }
    TakeKnown(merged, parts);
    merged.record.merged = std::move(merge);
    return merged;
}

}  // namespace rig::merge
