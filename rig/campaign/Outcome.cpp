#include "rig/campaign/Outcome.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <vector>

namespace rig::campaign {
namespace {

using result::Verdict;

Outcome OutcomeOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
        case Verdict::Warning:
            return Outcome::Pass;
        case Verdict::KnownFailure:
            return Outcome::KnownFailure;
        case Verdict::NotReached:
            return Outcome::NotReached;
        case Verdict::Inconclusive:
            return Outcome::Inconclusive;
        case Verdict::Environment:
            return Outcome::Environment;
        case Verdict::Fail:
            break;
    }
    return Outcome::Fail;
}

/// What the end of watching means, unless the judge finds that the DVR failed.
struct EndRule {
    const char* name;
    std::optional<Outcome> otherwise;  // none: what the judge says
};

const EndRule& RuleOf(End end) {
    static constexpr EndRule kRules[] = {{"", {}},
                                         {"done", {}},
                                         {"silence", {}},
                                         {"harness ended", {}},
                                         {"DVR's command failed", {}},
                                         {"no events", Outcome::Inconclusive},
                                         {"stuck", Outcome::Inconclusive},
                                         {"connection lost", Outcome::Fail},
                                         {"endless", Outcome::Fail},
                                         {"connect time-out", Outcome::Timeout},
                                         {"idle time-out", Outcome::Timeout},
                                         {"transfer time-out", Outcome::Timeout},
                                         {"case time-out", Outcome::Timeout},
                                         {"log too large", Outcome::Inconclusive},
                                         {"interrupted", Outcome::Interrupted},
                                         {"hook failed", Outcome::Environment},
                                         {"port taken", Outcome::Environment}};
    static_assert(std::size(kRules) == static_cast<std::size_t>(End::PortTaken) + 1);
    return kRules[static_cast<std::size_t>(end)];
}

/// @return the checks that warn, in words: "with a warning: CHECK: FOUND"
std::string WarningsOf(const result::RunResult& run) {
    std::vector<std::string> warnings;
    for (const result::CheckResult& check : run.checks) {
        if (check.verdict == Verdict::Warning) {
            warnings.push_back(fmt::format("{}: {}", check.id, check.found));
        }
    }
    return fmt::format("with {}: {}", warnings.size() == 1 ? "a warning" : "warnings",
                       fmt::join(warnings, "; "));
}

/// @return how likely a failed check follows from another: a message that nobody asked for, an unanswered
/// request and an export without an end often do
int Lightness(const result::CheckResult& check) {
    static constexpr const char* kLight[] = {"messages.asked", "requests.answered", "export.done"};
    const auto* const light = std::find(std::begin(kLight), std::end(kLight), check.id);
    return light == std::end(kLight) ? 0 : static_cast<int>(light - std::begin(kLight)) + 1;
}

/// @return the checks that have the run's verdict, the first in words, causes before consequences; for
/// a pass only its warnings
std::string ReasonOf(const result::RunResult& run) {
    const Verdict worst = result::WorstOf(run);
    if (worst == Verdict::Warning) {
        return WarningsOf(run);
    }
    std::vector<const result::CheckResult*> checks;
    for (const result::CheckResult& check : run.checks) {
        if (check.verdict == worst && worst != Verdict::Pass) {
            checks.push_back(&check);
        }
    }
    std::stable_sort(checks.begin(), checks.end(),
                     [](const auto* one, const auto* other) { return Lightness(*one) < Lightness(*other); });
    std::string words;
    for (const result::CheckResult* check : checks) {
        words += words.empty() ? fmt::format("{}: {}", check->id, check->found)
                               : fmt::format("{}{}", check == checks[1] ? "; also " : ", ", check->id);
    }
    return words;
}

Decision Judged(const result::RunResult& run) {
    return {OutcomeOf(result::WorstOf(run)), ReasonOf(run)};
}

std::string HarnessWords(const CaseFacts& facts) {
    return "the harness " + facts.harness->Words() + (facts.errors.empty() ? "" : ": " + facts.errors);
}

/// We did not stop the harness.
Decision EndedByItself(const CaseFacts& facts) {
    if (facts.harness->IsStatus(kPortTaken) || facts.isPortTaken) {
        return {Outcome::Environment, "port 5001 was taken"};
    }
    if (!facts.judged) {
        return {Outcome::Environment, HarnessWords(facts) + ", and wrote no line of a log"};
    }
    Decision judged = Judged(*facts.judged);
    if (facts.harness->IsSignal(SIGPIPE) && !facts.isDone && judged.outcome != Outcome::Fail) {
        return {Outcome::Fail,
                "the DVR closed the connection instead of waiting for the harness, which SIGPIPE ended"};
    }
    if (judged.outcome == Outcome::Fail || (facts.isDone && facts.harness->IsSignal(SIGABRT))) {
        return judged;
    }
    return {Outcome::Environment, HarnessWords(facts) + ", by itself"};
}

Decision Stopped(const CaseFacts& facts) {
    if (!facts.judged) {
        return {Outcome::Environment,
                "the harness wrote no line of a log" + (facts.words.empty() ? "" : "; " + facts.words)};
    }
    Decision judged = Judged(*facts.judged);
    if (!facts.harness || !facts.harness->IsStatus(kInterruptedHarness)) {
        const std::string words =
            fmt::format("expected the harness to end with status {} on SIGINT, but it {}",
                        kInterruptedHarness, facts.harness ? facts.harness->Words() : "did not end");
        if (judged.outcome != Outcome::Fail) {
            return {Outcome::Environment, words};
        }
        judged.reason += "; " + words;
    } else if (facts.end == End::DvrFailed) {
        judged.reason += (judged.reason.empty() ? "" : "; ") + facts.words;
    } else if (const std::optional<Outcome> otherwise = RuleOf(facts.end).otherwise) {
        const bool isKnown = judged.outcome == Outcome::KnownFailure && otherwise == Outcome::Fail;
        if (judged.outcome != Outcome::Fail && !isKnown) {
            return {Worse(*otherwise, judged.outcome), facts.words};
        }
        judged.reason += "; " + facts.words;
    }
    return judged;
}

Decision TimedOut(const CaseFacts& facts) {
    if (!facts.judged) {
        return {Outcome::Environment, "the harness wrote no line of a log; " + facts.words};
    }
    Decision decision{Outcome::Timeout, facts.words};
    if (result::WorstOf(*facts.judged) == Verdict::Environment) {
        decision.outcome = Outcome::Environment;
    }
    const Decision judged = Judged(*facts.judged);
    decision.reason += fmt::format("; the judge says {}{}{}", NameOf(judged.outcome),
                                   judged.reason.empty() ? "" : ", ", judged.reason);
    return decision;
}

}  // namespace

const char* NameOf(Outcome outcome) {
    static constexpr const char* kNames[] = {"PASS",    "KNOWN FAILURE", "NOT REACHED", "NOT RUN",
                                             "RUNNING", "INCONCLUSIVE",  "ENVIRONMENT", "TIMEOUT",
                                             "FAIL",    "INTERRUPTED"};
    return kNames[static_cast<std::size_t>(outcome)];
}

const char* NameOf(End end) {
    return RuleOf(end).name;
}

Decision Decide(const CaseFacts& facts) {
    const std::optional<Outcome> otherwise = RuleOf(facts.end).otherwise;
    if (otherwise == Outcome::Timeout) {
        return TimedOut(facts);
    }
    if (otherwise == Outcome::Environment || otherwise == Outcome::Interrupted) {
        return {*otherwise, facts.words};
    }
    if (facts.end == End::DvrFailed && !facts.isConnected) {
        return {Outcome::Environment, facts.words + ", and no DVR had connected"};
    }
    return !facts.isStopped && facts.harness ? EndedByItself(facts) : Stopped(facts);
}

result::CheckResult CheckOf(const Decision& decision, const std::optional<result::RunResult>& judged) {
    result::CheckResult check{"campaign.case", "The case runs to its end, in time.",
                              Verdict::Pass,   "a run that the judge can judge",
                              "one",           {}};
    const bool isOwn = judged && OutcomeOf(result::WorstOf(*judged)) == decision.outcome;
    if (isOwn) {
        return check;
    }
    check.found = decision.reason;
    switch (decision.outcome) {
        case Outcome::Fail:
        case Outcome::Timeout:
            check.verdict = Verdict::Fail;
            break;
        case Outcome::Environment:
            check.verdict = Verdict::Environment;
            break;
        default:
            check.verdict = Verdict::Inconclusive;
            break;
    }
    return check;
}

int ExitStatusOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Pass:
        case Outcome::KnownFailure:
            return 0;
        case Outcome::Fail:
        case Outcome::Timeout:
            return 1;
        case Outcome::Environment:
            return 3;
        case Outcome::Interrupted:
            return 128 + SIGINT;
        default:
            return 2;
    }
}

}  // namespace rig::campaign
