#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "rig/base/WriteWhole.h"
#include "rig/campaign/Campaign.h"
#include "rig/campaign/evidence/CampaignFiles.h"

// The campaign that searches: which sequences it tries, and what it keeps of them.

namespace rig::campaign {
namespace {

constexpr std::size_t kRepetitions = 3;

bool IsFailure(Outcome outcome) {
    return outcome == Outcome::Fail || outcome == Outcome::Timeout;
}

}  // namespace

Outcome Campaign::Search(const SearchLimit& limit, int dialect) {
    record_.begin = Now();
    display_.Begin(record_, folder_);
    Sequences sequences(record_.seed, dialect);
    const auto isOver = [&](std::size_t tries) {
        const double passed = static_cast<double>(Now() - record_.begin) / 1e6;
        return interrupts_.Came() || (limit.tries > 0 ? tries >= limit.tries : passed >= limit.seconds);
    };
    std::size_t tries = 0;
    while (!isOver(tries)) {
        const Sequence sequence = sequences.Next();
        CaseRecord record;
        display_.ShowTry(++tries, limit.tries, findings_.size());
        if (!Fails(sequence, fmt::format("try-{}", tries), record)) {
            continue;
        }
        const auto known = std::find_if(findings_.begin(), findings_.end(),
                                        [&](const SearchFinding& one) { return IsOneOf(one, sequence); });
        if (known != findings_.end()) {
            ++known->seen;
        } else {
            const SearchFinding finding = Find(sequence, tries, record);
            KeepFinding(finding, std::move(record));
        }
    }
    record_.state = interrupts_.Came() ? "interrupted" : "finished";
    record_.end = Now();
    WriteWhole(folder_ + "/search.json", FindingsJson(findings_, tries, record_.seed));
    WriteReports(folder_, result_);
    WriteRecord(folder_, record_);
    const Outcome outcome = interrupts_.Came()  ? Outcome::Interrupted
                            : findings_.empty() ? worst_
                                                : Outcome::Fail;
    std::string words = FindingsText(findings_, tries, record_.seed);
    if (unjudged_ > 0) {
        words += fmt::format("{} could not be judged\n", unjudged_);
    }
    display_.EndSearch(words, outcome, folder_);
    return outcome;
}

/// Plays the sequence. Evidence stays only of a failure. @param record  of the case
bool Campaign::Fails(const Sequence& sequence, const std::string& id, CaseRecord& record) {
    record = {};
    record.plan = CaseOf(sequence);
    record.id = id;
    const CaseFolder folder(folder_ + "/" + record.Folder());
    CaseRun run(rig_, folder, record, interrupts_, display_);
    run.Run();
    if (IsFailure(record.outcome)) {
        result_.runs.push_back(run.Result());
        return true;
    }
    if (record.outcome == Outcome::Environment) {
        display_.Warn(id + ": the harness or the rig failed, not the DVR: " + record.reason);
    }
    if (ExitStatusOf(record.outcome) != 0 && !interrupts_.Came()) {
        ++unjudged_;
        worst_ = Worse(worst_, record.outcome);
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder.Path(), ignored);
    return false;
}

/// Is it the DVR, or chance? And which of the faults is it?
SearchFinding Campaign::Find(const Sequence& sequence, std::size_t number, CaseRecord& record) {
    SearchFinding finding{sequence, record.reason, number};
    std::size_t steps = 0;
    const auto fails = [&](const Sequence& smaller) {
        CaseRecord again;
        const bool isFailure =
            !interrupts_.Came() && Fails(smaller, fmt::format("try-{}-{}", number, ++steps), again);
        if (isFailure) {
            std::error_code ignored;
            std::filesystem::remove_all(folder_ + "/" + record.Folder(), ignored);
            result_.runs.erase(result_.runs.end() - 2);  // of the larger
            record = std::move(again);
        }
        return isFailure;
    };
    for (std::size_t repetition = 0; repetition < kRepetitions; ++repetition) {
        finding.repeated += fails(sequence) ? 1U : 0U;
    }
    if (finding.repeated == kRepetitions) {
        finding.sequence = Shrink(sequence, fails);
    }
    finding.reason = record.reason;
    return finding;
}

/// What differs only in the faults that were left out is one finding.
void Campaign::KeepFinding(const SearchFinding& finding, CaseRecord record) {
    const auto known = std::find_if(findings_.begin(), findings_.end(), [&](const SearchFinding& one) {
        return IsOneOf(one, finding.sequence) && one.sequence.size() == finding.sequence.size();
    });
    if (known != findings_.end()) {
        ++known->seen;
        return;
    }
    findings_.push_back(finding);
    display_.CaseEnds(record);
    record_.cases.push_back(std::move(record));
    WriteRecord(folder_, record_);
}

}  // namespace rig::campaign
