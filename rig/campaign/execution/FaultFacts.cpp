#include "rig/campaign/execution/FaultFacts.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Affix.h"
#include "rig/base/ShellWord.h"

namespace rig::campaign {
namespace {

using result::CheckResult;
using result::Verdict;

/// @return whether the export may end before DONE without the DVR being to blame
bool MayBreakOff(fault::Duty duty, const CaseFacts& facts) {
    return duty == fault::Duty::Survives || (duty == fault::Duty::Refuses && facts.end != End::Done);
}

/// @return the verdict on the case of a recovery with that outcome. It failed for a reason of its own only if
/// the harness or the rig did.
Verdict VerdictOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Pass:
            return Verdict::Pass;
        case Outcome::KnownFailure:
            return Verdict::KnownFailure;
        case Outcome::Timeout:
        case Outcome::Fail:
            return Verdict::Fail;
        case Outcome::Environment:
            return Verdict::Environment;
        default:
            return Verdict::Inconclusive;
    }
}

}  // namespace

std::string ProxiedCommand(const Rig& rig, const CaseFolder& folder, const Case& plan, bool once) {
    std::string command = fmt::format("{} --listen 5001{} --log {}", rig.proxy, once ? " --once" : "",
                                      ShellWord(folder.PathOf(kProxyLog)));
    if (plan.fault) {
        std::vector<fault::FaultCase> faults = {*plan.fault};
        faults.insert(faults.end(), plan.others.begin(), plan.others.end());
        for (const fault::FaultCase& one : faults) {
            command += fmt::format(" --fault {} --on {}", ShellWord(one.Named()), one.message);
        }
        command += fmt::format(" --seed {}", rig.seed);
    }
    return command + " --harness-command " + ShellWord(rig.harness + " " + plan.switches);
}

bool HasActed(const CaseFacts& facts) {
    return facts.judged && facts.end != End::Interrupted &&
           std::any_of(facts.judged->checks.begin(), facts.judged->checks.end(),
                       [](const CheckResult& check) {
                           return check.id == "fault.answer";  // which applies only then
                       });
}

void LeaveToTheFault(CaseFacts& facts, const Case& plan) {
    std::vector<CheckResult>& checks = facts.judged->checks;
    if (!plan.others.empty()) {  // the first may leave the others nothing to act on
        checks.erase(std::remove_if(checks.begin(), checks.end(),
                                    [](const CheckResult& check) { return check.id == "fault.acted"; }),
                     checks.end());
    }
    if (!MayBreakOff(DutyOf(plan), facts)) {
        return;
    }
    checks.erase(std::remove_if(checks.begin(), checks.end(),
                                [](const CheckResult& check) {
                                    return !StartsWith(check.id, "fault.") && check.id != "harness.ran";
                                }),
                 checks.end());
    facts.end = End::Done;
    facts.isStopped = true;
}

void AddRecovery(CaseFacts& facts, const CaseFacts& recovery) {
    if (recovery.end == End::Interrupted || recovery.end == End::PortTaken) {
        facts.end = recovery.end;
        facts.words = recovery.words;
        return;
    }
    Decision decision = Decide(recovery);
    if (recovery.end == End::DvrFailed) {
        decision = {Outcome::Fail, recovery.words};  // it lived until the fault
    }
    facts.judged->checks.push_back({"recovery",
                                    "The DVR calls again after the fault, and passes a clean export.",
                                    VerdictOf(decision.outcome),
                                    "a clean export that passes",
                                    decision.outcome == Outcome::Pass ? "one" : decision.reason,
                                    {}});
}

}  // namespace rig::campaign
