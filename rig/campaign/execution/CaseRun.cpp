#include "rig/campaign/execution/CaseRun.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <utility>

#include "rig/base/Affix.h"
#include "rig/base/ShellWord.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/execution/FaultFacts.h"
#include "rig/html/HtmlReport.h"
#include "rig/result/Reports.h"

namespace rig::campaign {
namespace {

using result::Verdict;

/// @return "PASS", or "FAIL, xfer.answer: ..."
std::string InWords(const CaseRecord& record) {
    return NameOf(record.outcome) + (record.reason.empty() ? "" : ", " + record.reason);
}

bool IsAboutDelivery(const result::CheckResult& check) {
    return StartsWith(check.id, "delivery.");
}

}  // namespace

CaseRun::CaseRun(Rig rig, const CaseFolder& folder, CaseRecord& record, Interrupts& interrupts,
                 Display& display)
    : rig_(std::move(rig)), folder_(folder), record_(record), interrupts_(interrupts), display_(display) {}

void CaseRun::Run() {
    record_.begin = Now();
    Hooks hooks(rig_.hooks, folder_, record_.id, interrupts_);
    display_.Show("hooks before the case", "");
    facts_.words = hooks.BeforeCase();
    if (facts_.words.empty()) {
        Play();
    } else {
        facts_.end = interrupts_.Came() ? End::Interrupted : End::HookFailed;
    }
    TakeDecision();
    record_.over = facts_.end;
    if (facts_.end != End::Interrupted && facts_.end != End::HookFailed) {
        AskWhetherAlive(hooks);
    }
    TakeHooks(hooks);
    record_.end = Now();
    if (record_.outcome == Outcome::Environment) {
        display_.Warn(record_.id + ": " + InWords(record_));
    }
    WriteEvidence();
}

bool CaseRun::TakeNextCall(double seconds) {
    const Decision before = Decide(facts_);
    if (before.outcome != record_.outcome || before.reason != record_.reason) {
        return false;  // a hook decided
    }
    judge::Limits limits = rig_.limits;
    limits.after.calledAfter = seconds;
    limits.delivered.reset();  // the next case has delivered since
    result::Result again = JudgeAgain(folder_, limits);
    for (result::RunResult& run : again.runs) {
        std::copy_if(result_.checks.begin(), result_.checks.end(), std::back_inserter(run.checks),
                     IsAboutDelivery);
    }
    TakeVerdict(std::move(again));
    TakeDecision();
    WriteEvidence();
    return record_.outcome != before.outcome;
}

void CaseRun::TakeDecision() {
    const Decision decision = Decide(facts_);
    record_.outcome = decision.outcome;
    record_.reason = decision.reason;
}

void CaseRun::Play() {
    if (record_.plan.fault) {
        PlayFault();
        return;
    }
    Manner manner;
    if (!rig_.isDirect) {
        manner.harness = ProxiedCommand(rig_, folder_, record_.plan, false);
    }
    Export played(rig_, folder_, record_, interrupts_, display_, std::move(manner));
    result::Result result = played.Run();
    Take(played);
    TakeVerdict(std::move(result));
}

/// The fault, and then a clean export by the same DVR.
void CaseRun::PlayFault() {
    Rig rig = rig_;
    rig.limits.proxy = folder_.PathOf(kProxyLog);
    Manner manner{ProxiedCommand(rig_, folder_, record_.plan, true), true, true, true};
    Export played(rig, folder_, record_, interrupts_, display_, std::move(manner));
    result::Result result = played.Run();
    Take(played);
    TakeVerdict(std::move(result));
    if (HasActed(facts_)) {
        LeaveToTheFault(facts_, record_.plan);
        Recover(played.TakeDvr());
    } else if (std::unique_ptr<Child> dvr = played.TakeDvr()) {
        dvr->Signal(SIGTERM);
    }
}

void CaseRun::Recover(std::unique_ptr<Child> dvr) {
    CaseRecord record = record_;
    record.plan = RecoveryOf(record_.plan);
    record.times = {};
    const CaseFolder folder(folder_.PathOf("recovery"));
    Rig rig = rig_;
    rig.limits.proxy = folder.PathOf(kProxyLog);
    Manner manner{ProxiedCommand(rig_, folder, record.plan, true), true, true, false, std::move(dvr)};
    Export played(rig, folder, record, interrupts_, display_, std::move(manner));
    result::Result result = played.Run();
    CaseFacts facts = played.Facts();
    if (!result.runs.empty()) {
        judge::Apply(rig_.known, result.runs.front());
        facts.judged = std::move(result.runs.front());
    }
    record_.dvr = record.dvr;
    record_.times += record.times;
    AddRecovery(facts_, facts);
}

void CaseRun::Take(const Export& played) {
    facts_ = played.Facts();
    if (played.Messages() != nullptr) {
        messages_ = *played.Messages();
    }
    if (played.Watched() != nullptr) {
        connected_ = played.Watched()->ConnectedAt();
        done_ = played.Watched()->DoneAt();
    }
}

void CaseRun::TakeVerdict(result::Result result) {
    if (result.runs.empty()) {
        return;
    }
    // One start of the harness is one run; if the log says otherwise, the worst run counts.
    const auto worst = std::max_element(
        result.runs.begin(), result.runs.end(),
        [](const auto& one, const auto& other) { return result::WorstOf(one) < result::WorstOf(other); });
    result_ = std::move(*worst);
    judge::Apply(rig_.known, result_);
    Exclude();
    facts_.judged.emplace();
    facts_.judged->checks = result_.checks;
}

/// Removes the checks that this case cannot reach, unless they have a verdict all the same.
void CaseRun::Exclude() {
    record_.excluded.clear();
    const std::vector<std::string>& excluded = record_.plan.excluded;
    std::vector<result::CheckResult> kept;
    for (result::CheckResult& check : result_.checks) {
        const bool isOpen = check.verdict == Verdict::Inconclusive || check.verdict == Verdict::NotReached;
        if (isOpen && std::find(excluded.begin(), excluded.end(), check.id) != excluded.end()) {
            record_.excluded.emplace_back(check.id);
        } else {
            kept.push_back(std::move(check));
        }
    }
    result_.checks = std::move(kept);
}

void CaseRun::AskWhetherAlive(Hooks& hooks) {
    display_.Show("hooks after the case", "");
    const std::string failure = hooks.AfterCase(NameOf(record_.outcome));
    std::string words;
    const Hooks::Life life = hooks.Alive(NameOf(record_.outcome), words);
    if (interrupts_.Came() && (!failure.empty() || life != Hooks::Life::Alive)) {
        record_.outcome = Outcome::Interrupted;
        record_.reason = fmt::format("by {}, after the case", interrupts_.Words());
    } else if (!failure.empty() || life == Hooks::Life::Dead) {
        record_.reason = (failure.empty() ? "the DVR is not alive after the case: " + words : failure) +
                         "; the case itself: " + InWords(record_);
        record_.outcome = Outcome::Environment;
    } else if (life == Hooks::Life::Revived) {
        record_.reason = "the DVR did not survive the case, and came back after --power-cycle: " + words +
                         "; the case itself: " + InWords(record_);
        record_.outcome = Outcome::Fail;
    }
}

void CaseRun::TakeHooks(const Hooks& hooks) {
    record_.hooks = hooks.Records();
    for (const HookRecord& hook : record_.hooks) {
        record_.times.hooks += hook.seconds;
    }
}

void CaseRun::WriteEvidence() {
    if (facts_.judged) {
        record_.verdict = result::WorstOf(*facts_.judged);
        result_.checks = facts_.judged->checks;
    }
    result_.name = record_.id;
    result_.checks.push_back(CheckOf({record_.outcome, record_.reason}, facts_.judged));
    if (result_.switches.empty()) {
        result_.switches = record_.plan.switches;
        result_.begin = record_.begin;
        result_.end = record_.end;
    }
    record_.checks.clear();
    for (const result::CheckResult& check : result_.checks) {
        record_.checks.push_back(
            {check.id, check.requirement, check.verdict, check.expected, check.found, {}});
    }
    record_.timings = result_.timings;
    result::Result whole;
    whole.runs.push_back(result_);
    folder_.Write("verdict.json", result::JsonReport(whole));
    folder_.Write("report.html", html::HtmlReport(whole));
    record_.files = folder_.Files();
    folder_.Write("case.json", CaseJson(record_));
}

}  // namespace rig::campaign
