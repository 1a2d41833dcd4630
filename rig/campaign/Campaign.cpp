#include "rig/campaign/Campaign.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/execution/Harness.h"

namespace rig::campaign {

namespace {

constexpr int kShareOfWriting = 20;  // one part in so many

result::RunResult WithoutLog(result::RunResult run) {
    run.steps.clear();
    run.log.clear();
    return run;
}

}  // namespace

Campaign::Campaign(Rig rig, std::string folder, CampaignRecord record)
    : rig_(std::move(rig)),
      folder_(std::move(folder)),
      hold_(HoldCampaignFolder(folder_)),
      record_(std::move(record)) {}

void Campaign::Take(std::size_t number, FinishedCase finished) {
    CaseRecord& record = record_.cases[number];
    record = std::move(finished.record);
    if (record.plan.role == Case::Role::First && ExitStatusOf(record.outcome) != 0) {
        failedClean_.insert(record.plan.protocol);
    }
    if (record.verdict) {
        record_.coverage.Add(record.plan, finished.result,
                             MessagesIn(CaseFolder(folder_ + "/" + record.Folder())));
    }
    result_.runs.push_back(WithoutLog(std::move(finished.result)));
}

Outcome Campaign::Run() {
    if (record_.begin == 0) {
        record_.begin = Now();
    }
    WriteRecord(folder_,
                record_);  // before anything that a killed campaign leaves, so that it can be gone on with
    display_.Begin(record_, folder_);
    for (std::size_t number = 0; number < record_.cases.size() && !interrupts_.Came(); ++number) {
        CaseRecord& record = record_.cases[number];
        if (record.outcome != Outcome::NotRun) {
            away_ = SecondsAway(record.plan);
            continue;
        }
        display_.CaseBegins(record, number + 1, record_.cases.size());
        RunCase(record);
        display_.CaseEnds(record);
    }
    const bool isBroken = interrupts_.Came() &&
                          std::any_of(record_.cases.begin(), record_.cases.end(), [](const CaseRecord& one) {
                              return one.outcome == Outcome::NotRun || one.outcome == Outcome::Interrupted;
                          });
    record_.state = isBroken ? "interrupted" : "finished";
    record_.end = Now();
    FindKnownUnseen();
    WriteReports(folder_, result_);
    WriteRecord(folder_, record_);
    display_.End(record_, folder_);
    return record_.Whole();
}

/// Large campaigns have large files: to write them takes at most a small share of the time, and a case that
/// they do not yet tell of has its own.
void Campaign::WriteInTime() {
    const Clock::time_point begin = Clock::now();
    if (begin < nextWrite_) {
        return;
    }
    WriteReports(folder_, result_);
    WriteRecord(folder_, record_);
    const Clock::time_point end = Clock::now();
    nextWrite_ = end + kShareOfWriting * (end - begin);
}

void Campaign::RunCase(CaseRecord& record) {
    record.outcome = Outcome::Running;
    record.begin = Now();
    record.isSuspect = failedClean_.count(record.plan.protocol) > 0;
    const CaseFolder folder(folder_ + "/" + record.Folder());
    folder.Write("case.json", CaseJson(record));
    WriteInTime();
    Rig rig = rig_;
    rig.patience.connect += away_;
    auto run = std::make_unique<CaseRun>(rig, folder, record, interrupts_, display_);
    run->Run();
    TellLast(*run);
    away_ = SecondsAway(record.plan);
    NoteCleanExport(record);
    KeepResult(record, *run);
    last_ = std::move(run);
    WriteInTime();
}

void Campaign::NoteCleanExport(const CaseRecord& record) {
    const bool isGood = ExitStatusOf(record.outcome) == 0;
    const bool hasFailed = record.plan.role == Case::Role::First && !isGood && !interrupts_.Came();
    const bool hasOthers =
        std::any_of(record_.cases.begin(), record_.cases.end(), [&record](const CaseRecord& one) {
            return one.plan.protocol == record.plan.protocol && one.plan.role != Case::Role::First;
        });
    if (hasFailed && failedClean_.insert(record.plan.protocol).second && hasOthers) {
        display_.Warn(
            fmt::format("{} did not pass: if later cases of {}.0 fail, do not blame how the DVR "
                        "handles faults",
                        record.id, record.plan.protocol));
    }
}

void Campaign::KeepResult(const CaseRecord& record, const CaseRun& run) {
    if (record.verdict) {
        record_.coverage.Add(record.plan, run.Result(), run.Messages());
    }
    result_.runs.push_back(WithoutLog(run.Result()));
}

/// The call that a case got may have come too soon after the case before it. Not so where we start the DVR,
/// or cut its power, as it then cannot know that it is to stay away.
void Campaign::TellLast(const CaseRun& next) {
    if (last_ == nullptr || rig_.dvr || away_ == 0 || !last_->DoneAt() || !next.ConnectedAt()) {
        return;
    }
    const CaseRecord& record = last_->Record();
    const bool hadPowerCut = std::any_of(record.hooks.begin(), record.hooks.end(),
                                         [](const HookRecord& one) { return one.hook == "power-cycle"; });
    const std::chrono::duration<double> passed = *next.ConnectedAt() - *last_->DoneAt();
    if (!hadPowerCut && last_->TakeNextCall(passed.count())) {
        result_.runs.back() = WithoutLog(last_->Result());
        display_.CaseChanges(record);
    }
}

void Campaign::FindKnownUnseen() {
    judge::KnownTally tally;
    for (const result::RunResult& run : result_.runs) {
        tally.Add(run);
    }
    result::RunResult unseen = tally.Unseen(rig_.known);
    std::vector<std::string>& ids = record_.shard ? record_.shard->knownUnseen : record_.knownUnseen;
    for (const result::CheckResult& check : unseen.checks) {
        ids.emplace_back(check.id);
    }
    if (!record_.knownUnseen.empty()) {
        result_.runs.push_back(std::move(unseen));
    }
}

}  // namespace rig::campaign
