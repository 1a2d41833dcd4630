#include <fmt/format.h>
#include <gtest/gtest.h>

#include <csignal>
#include <utility>
#include <vector>

#include "rig/campaign/Outcome.h"

namespace rig::campaign {
namespace {

using result::Verdict;

constexpr Ending kInterrupted{44, {}};

result::RunResult Judged(Verdict verdict) {
    result::RunResult run;
    run.checks = {{"log.start", "", Verdict::Pass, "", "fine", {}},
                  {"x.answer", "", verdict, "", "found it", {}}};
    return run;
}

/// A run that came to its end and was stopped.
CaseFacts Stopped(Verdict verdict) {
    CaseFacts facts;
    facts.end = End::Done;
    facts.harness = kInterrupted;
    facts.isStopped = facts.isConnected = facts.isDone = true;
    facts.judged = Judged(verdict);
    return facts;
}

CaseFacts EndedByItself(Verdict verdict, Ending end) {
    CaseFacts facts = Stopped(verdict);
    facts.end = End::HarnessEnded;
    facts.isStopped = facts.isDone = false;
    facts.harness = end;
    return facts;
}

/// A run whose watching ended early, and the harness with it.
CaseFacts BrokenOff(End end, std::optional<Verdict> verdict) {
    CaseFacts facts = Stopped(Verdict::Pass);
    facts.end = end;
    facts.words = "why";
    facts.isDone = false;
    facts.judged.reset();
    if (verdict) {
        facts.judged = Judged(*verdict);
    }
    return facts;
}

/// @return the facts with other words, checks or endings: With(facts, &CaseFacts::words, "why")
template <typename Member, typename Value>
CaseFacts With(CaseFacts facts, Member member, Value value) {
    facts.*member = value;
    return facts;
}

result::RunResult JudgedAs(const std::vector<std::pair<std::string_view, Verdict>>& checks) {
    result::RunResult run;
    for (const auto& [id, verdict] : checks) {
        run.checks.push_back({id, "", verdict, "", "found it", {}});
    }
    return run;
}

struct Row {
    CaseFacts facts;
    std::string decision;  // OUTCOME|reason
};

void ExpectDecisions(const std::vector<Row>& rows) {
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const Decision decision = Decide(rows[index].facts);
        EXPECT_EQ(std::string(NameOf(decision.outcome)) + "|" + decision.reason, rows[index].decision)
            << "row " << index;
    }
}

TEST(Outcome, IsTheJudgesWhereARunCameToItsEnd) {
    const auto judged = [](const std::vector<std::pair<std::string_view, Verdict>>& checks) {
        return With(Stopped(Verdict::Pass), &CaseFacts::judged, JudgedAs(checks));
    };
    constexpr Verdict kFail = Verdict::Fail;
    ExpectDecisions({
        {Stopped(Verdict::Pass), "PASS|"},
        {Stopped(Verdict::KnownFailure), "KNOWN FAILURE|x.answer: found it"},
        {Stopped(Verdict::NotReached), "NOT REACHED|x.answer: found it"},
        {Stopped(Verdict::Inconclusive), "INCONCLUSIVE|x.answer: found it"},
        {Stopped(Verdict::Environment), "ENVIRONMENT|x.answer: found it"},
        {Stopped(Verdict::Fail), "FAIL|x.answer: found it"},
        {Stopped(Verdict::Warning), "PASS|with a warning: x.answer: found it"},
        {judged({{"x", Verdict::Warning}, {"y", Verdict::Pass}, {"z", Verdict::Warning}}),
         "PASS|with warnings: x: found it; z: found it"},
        {judged({{"x", Verdict::Warning}, {"y", kFail}}), "FAIL|y: found it"},
        {judged({{"export.done", kFail}, {"y", Verdict::Pass}}), "FAIL|export.done: found it"},
        {judged({{"export.done", kFail},
                 {"messages.asked", kFail},
                 {"x", Verdict::Inconclusive},
                 {"y", kFail},
                 {"requests.answered", kFail},
                 {"z", kFail}}),
         "FAIL|y: found it; also z, messages.asked, requests.answered, export.done"},
    });
}

TEST(Outcome, DependsOnHowTheHarnessEnded) {
    const CaseFacts stopped = Stopped(Verdict::Pass);
    const CaseFacts silent = With(stopped, &CaseFacts::judged, std::nullopt);
    const CaseFacts failed = Stopped(Verdict::Fail);
    const Ending kill{{}, SIGKILL};
    const CaseFacts none = With(EndedByItself(Verdict::Pass, {127, {}}), &CaseFacts::judged, std::nullopt);
    const std::string demand = "expected the harness to end with status 44 on SIGINT, but it ";
    const std::string hungUp =
        "FAIL|the DVR closed the connection instead of waiting for the harness, which SIGPIPE ended";
    ExpectDecisions({
        {With(stopped, &CaseFacts::harness, Ending{0, {}}), "ENVIRONMENT|" + demand + "ended with status 0"},
        {With(stopped, &CaseFacts::harness, std::nullopt), "ENVIRONMENT|" + demand + "did not end"},
        {With(failed, &CaseFacts::harness, kill),
         "FAIL|x.answer: found it; " + demand + "was ended by signal 9 (Killed)"},
        {silent, "ENVIRONMENT|the harness wrote no line of a log"},
        {With(silent, &CaseFacts::words, "why"), "ENVIRONMENT|the harness wrote no line of a log; why"},
        {EndedByItself(Verdict::Fail, {{}, SIGABRT}), "FAIL|x.answer: found it"},
        {EndedByItself(Verdict::Fail, {{}, SIGPIPE}), "FAIL|x.answer: found it"},
        {EndedByItself(Verdict::Inconclusive, {{}, SIGPIPE}), hungUp},
        {EndedByItself(Verdict::Inconclusive, {128 + SIGPIPE, {}}), hungUp},
        {With(EndedByItself(Verdict::Pass, {{}, SIGPIPE}), &CaseFacts::isDone, true),
         "ENVIRONMENT|the harness was ended by signal 13 (Broken pipe), by itself"},
        {With(EndedByItself(Verdict::Pass, {{}, SIGABRT}), &CaseFacts::isDone, true), "PASS|"},
        {EndedByItself(Verdict::Pass, {{}, SIGABRT}),
         "ENVIRONMENT|the harness was ended by signal 6 (Aborted), by itself"},
        {EndedByItself(Verdict::Inconclusive, {0, {}}),
         "ENVIRONMENT|the harness ended with status 0, by itself"},
        {EndedByItself(Verdict::Inconclusive, {99, {}}), "ENVIRONMENT|port 5001 was taken"},
        {none, "ENVIRONMENT|the harness ended with status 127, and wrote no line of a log"},
        {With(none, &CaseFacts::errors, "sh: no"),
         "ENVIRONMENT|the harness ended with status 127: sh: no, and wrote no line of a log"},
    });
}

TEST(Outcome, DependsOnWhyWatchingEnded) {
    for (const End end : {End::ConnectTimeout, End::IdleTimeout, End::TransferTimeout, End::CaseTimeout}) {
        ExpectDecisions({
            {BrokenOff(end, Verdict::Pass), "TIMEOUT|why; the judge says PASS"},
            {BrokenOff(end, Verdict::Fail), "TIMEOUT|why; the judge says FAIL, x.answer: found it"},
            {BrokenOff(end, Verdict::Environment),
             "ENVIRONMENT|why; the judge says ENVIRONMENT, x.answer: found it"},
            {BrokenOff(end, std::nullopt), "ENVIRONMENT|the harness wrote no line of a log; why"},
        });
    }
    ExpectDecisions({
        {BrokenOff(End::DvrFailed, Verdict::Inconclusive), "INCONCLUSIVE|x.answer: found it; why"},
        {BrokenOff(End::DvrFailed, Verdict::Pass), "PASS|why"},
        {With(BrokenOff(End::DvrFailed, Verdict::Pass), &CaseFacts::isConnected, false),
         "ENVIRONMENT|why, and no DVR had connected"},
        {BrokenOff(End::LogTooLarge, Verdict::Pass), "INCONCLUSIVE|why"},
        {BrokenOff(End::LogTooLarge, Verdict::Fail), "FAIL|x.answer: found it; why"},
        {BrokenOff(End::HookFailed, Verdict::Fail), "ENVIRONMENT|why"},
        {BrokenOff(End::PortTaken, Verdict::Fail), "ENVIRONMENT|why"},
        {BrokenOff(End::Interrupted, Verdict::Fail), "INTERRUPTED|why"},
    });
}

TEST(Outcome, OfADeadEndIsWorseThanThePassThatItKeptOff) {
    for (const auto& [end, outcome] :
         {std::pair(End::NoEvents, "INCONCLUSIVE"), std::pair(End::Stuck, "INCONCLUSIVE"),
          std::pair(End::Lost, "FAIL"), std::pair(End::Endless, "FAIL")}) {
        const std::string otherwise = std::string(outcome) + "|why";
        const bool isFailure = outcome == std::string("FAIL");
        ExpectDecisions({
            {BrokenOff(end, Verdict::Pass), otherwise},
            {BrokenOff(end, Verdict::NotReached), otherwise},
            {BrokenOff(end, Verdict::Inconclusive), otherwise},
            {BrokenOff(end, Verdict::Environment), isFailure ? otherwise : "ENVIRONMENT|why"},
            {BrokenOff(end, Verdict::Fail), "FAIL|x.answer: found it; why"},
            {BrokenOff(end, Verdict::KnownFailure),  // which explains no more than a failure
             isFailure ? "KNOWN FAILURE|x.answer: found it; why" : otherwise},
        });
    }
}

TEST(Outcome, HasAWordForWhyWatchingEnded) {
    std::string names;
    for (int end = 0; end <= static_cast<int>(End::PortTaken); ++end) {
        names += std::string(NameOf(static_cast<End>(end))) + ", ";
    }
    EXPECT_EQ(names,
              ", done, silence, harness ended, DVR's command failed, no events, stuck, connection lost, "
              "endless, connect time-out, idle time-out, transfer time-out, case time-out, log too large, "
              "interrupted, hook failed, port taken, ");
}

TEST(Outcome, AppearsAsACheckOfTheRun) {
    const auto shown = [](Outcome outcome, const std::optional<result::RunResult>& judged) {
        const result::CheckResult check = CheckOf({outcome, "why"}, judged);
        return fmt::format("{}: {} {} / {} / {}", check.id, result::NameOf(check.verdict), check.requirement,
                           check.expected, check.found);
    };
    const auto expected = [](const std::string& verdict, const std::string& found) {
        return "campaign.case: " + verdict +
               " The case runs to its end, in time. / a run that the judge can judge / " + found;
    };
    EXPECT_EQ(shown(Outcome::Pass, Judged(Verdict::Pass)), expected("PASS", "one"));
    EXPECT_EQ(shown(Outcome::Pass, Judged(Verdict::Warning)), expected("PASS", "one"));
    EXPECT_EQ(shown(Outcome::Fail, Judged(Verdict::Fail)), expected("PASS", "one")) << "the judge says it";
    EXPECT_EQ(shown(Outcome::Fail, Judged(Verdict::Inconclusive)), expected("FAIL", "why"));
    EXPECT_EQ(shown(Outcome::Timeout, Judged(Verdict::Fail)), expected("FAIL", "why"));
    EXPECT_EQ(shown(Outcome::Environment, std::nullopt), expected("ENVIRONMENT", "why"));
    EXPECT_EQ(shown(Outcome::Interrupted, std::nullopt), expected("INCONCLUSIVE", "why"));
}

TEST(Outcome, HasANameAndAnExitStatus) {
    const std::vector<std::pair<std::string, int>> rows = {
        {"PASS", 0},         {"KNOWN FAILURE", 0}, {"NOT REACHED", 2}, {"NOT RUN", 2}, {"RUNNING", 2},
        {"INCONCLUSIVE", 2}, {"ENVIRONMENT", 3},   {"TIMEOUT", 1},     {"FAIL", 1},    {"INTERRUPTED", 130}};
    for (std::size_t index = 0; index < rows.size(); ++index) {
        const auto outcome = static_cast<Outcome>(index);  // from best to worst
        EXPECT_EQ(NameOf(outcome), rows[index].first);
        EXPECT_EQ(ExitStatusOf(outcome), rows[index].second) << rows[index].first;
    }
}

TEST(Outcome, OfSeveralCasesIsTheWorst) {
    EXPECT_EQ(Worse(Outcome::Pass, Outcome::KnownFailure), Outcome::KnownFailure);
    EXPECT_EQ(Worse(Outcome::Inconclusive, Outcome::NotRun), Outcome::Inconclusive);
    EXPECT_EQ(Worse(Outcome::Environment, Outcome::Inconclusive), Outcome::Environment);
    EXPECT_EQ(Worse(Outcome::Environment, Outcome::Timeout), Outcome::Timeout);
    EXPECT_EQ(Worse(Outcome::Fail, Outcome::Timeout), Outcome::Fail);
    EXPECT_EQ(Worse(Outcome::Interrupted, Outcome::Fail), Outcome::Interrupted);
}

}  // namespace
}  // namespace rig::campaign
