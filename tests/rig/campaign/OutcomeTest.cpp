#include <gtest/gtest.h>

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

TEST(Outcome, IsTheJudgesWhereARunCameToItsEnd) {
    EXPECT_EQ(Decide(Stopped(Verdict::Pass)).outcome, Outcome::Pass);
    EXPECT_EQ(Decide(Stopped(Verdict::Pass)).reason, "");
    EXPECT_EQ(Decide(Stopped(Verdict::KnownFailure)).outcome, Outcome::KnownFailure);
    EXPECT_EQ(Decide(Stopped(Verdict::NotReached)).outcome, Outcome::NotReached);
    EXPECT_EQ(Decide(Stopped(Verdict::Inconclusive)).outcome, Outcome::Inconclusive);
    EXPECT_EQ(Decide(Stopped(Verdict::Environment)).outcome, Outcome::Environment);
    EXPECT_EQ(Decide(Stopped(Verdict::Fail)).outcome, Outcome::Fail);
    EXPECT_EQ(Decide(Stopped(Verdict::Fail)).reason, "x.answer: found it");
}

TEST(Outcome, OfWarningsIsAPassThatNamesThem) {
    CaseFacts facts = Stopped(Verdict::Warning);
    EXPECT_EQ(Decide(facts).outcome, Outcome::Pass);
    EXPECT_EQ(Decide(facts).reason, "with a warning: x.answer: found it");
    facts.judged->checks.push_back({"y.answer", "", Verdict::Warning, "", "and that", {}});
    EXPECT_EQ(Decide(facts).reason, "with warnings: x.answer: found it; y.answer: and that");
    EXPECT_EQ(CheckOf(Decide(facts), facts.judged).verdict, Verdict::Pass);
    facts.judged->checks.push_back({"z.answer", "", Verdict::Fail, "", "and worse", {}});
    EXPECT_EQ(Decide(facts).reason, "z.answer: and worse");
}

TEST(Outcome, IsEnvironmentWhereTheHarnessDoesNotEndAsItMust) {
    CaseFacts facts = Stopped(Verdict::Pass);
    facts.harness = Ending{0, {}};
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
    facts.harness.reset();
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
    facts = Stopped(Verdict::Fail);
    facts.harness = Ending{{}, SIGKILL};
    EXPECT_EQ(Decide(facts).outcome, Outcome::Fail) << "what the DVR did wrong stays";
    EXPECT_NE(Decide(facts).reason.find("Killed"), std::string::npos);
}

TEST(Outcome, IsTheDvrsFaultWhereItEndedTheHarness) {
    EXPECT_EQ(Decide(EndedByItself(Verdict::Fail, {{}, SIGABRT})).outcome, Outcome::Fail);
    EXPECT_EQ(Decide(EndedByItself(Verdict::Inconclusive, {{}, SIGPIPE})).outcome, Outcome::Fail);
    EXPECT_EQ(Decide(EndedByItself(Verdict::Inconclusive, {128 + SIGPIPE, {}})).outcome, Outcome::Fail);
    EXPECT_EQ(Decide(EndedByItself(Verdict::Pass, {{}, SIGSEGV})).outcome, Outcome::Environment);
    EXPECT_EQ(Decide(EndedByItself(Verdict::Inconclusive, {0, {}})).outcome, Outcome::Environment);
    EXPECT_EQ(Decide(EndedByItself(Verdict::Inconclusive, {99, {}})).reason, "port 5001 was taken");
}

TEST(Outcome, IsEnvironmentWhereThereWasNoLog) {
    CaseFacts facts = EndedByItself(Verdict::Pass, {127, {}});
    facts.judged.reset();
    facts.errors = "sh: no such program";
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
    EXPECT_EQ(Decide(facts).reason,
              "the harness ended with status 127: sh: no such program, and wrote no line of a log");
    facts = Stopped(Verdict::Pass);
    facts.judged.reset();
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
}

TEST(Outcome, NamesTheTimeoutAndWhatTheJudgeSays) {
    for (const End end : {End::ConnectTimeout, End::IdleTimeout, End::CaseTimeout}) {
        CaseFacts facts = Stopped(Verdict::Fail);
        facts.end = end;
        facts.words = "such a time-out";
        EXPECT_EQ(Decide(facts).outcome, Outcome::Timeout);
        EXPECT_EQ(Decide(facts).reason, "such a time-out; the judge says FAIL, x.answer: found it");
    }
}

TEST(Outcome, OfATimeoutWithoutLogIsTheRigs) {
    CaseFacts facts;
    facts.isStopped = true;
    facts.end = End::ConnectTimeout;
    facts.words = "such a time-out";
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
    EXPECT_EQ(Decide(facts).reason, "the harness wrote no line of a log; such a time-out");
}

TEST(Outcome, OfATimeoutThatTheRigCausedIsTheRigs) {
    CaseFacts facts = Stopped(Verdict::Environment);
    facts.end = End::CaseTimeout;
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
}

TEST(Outcome, OfAFailedCommandDependsOnWhetherADvrCame) {
    CaseFacts facts = Stopped(Verdict::Inconclusive);
    facts.end = End::DvrFailed;
    facts.words = "the DVR's command ended with status 7";
    EXPECT_EQ(Decide(facts).outcome, Outcome::Inconclusive);
    EXPECT_NE(Decide(facts).reason.find("status 7"), std::string::npos);
    facts.isConnected = false;
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
}

TEST(Outcome, OfHooksPortAndInterruptOverridesTheJudges) {
    CaseFacts facts = Stopped(Verdict::Fail);
    facts.words = "why";
    facts.end = End::HookFailed;
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
    facts.end = End::PortTaken;
    EXPECT_EQ(Decide(facts).outcome, Outcome::Environment);
    facts.end = End::Interrupted;
    EXPECT_EQ(Decide(facts).outcome, Outcome::Interrupted);
    EXPECT_EQ(Decide(facts).reason, "why");
}

TEST(Outcome, OfALogWithoutEndIsNotAPass) {
    CaseFacts facts = Stopped(Verdict::Pass);
    facts.end = End::LogTooLarge;
    EXPECT_EQ(Decide(facts).outcome, Outcome::Inconclusive);
}

TEST(Outcome, AppearsAsACheckOfTheRun) {
    const auto verdict = [](Outcome outcome, const std::optional<result::RunResult>& judged) {
        return CheckOf({outcome, "why"}, judged).verdict;
    };
    EXPECT_EQ(verdict(Outcome::Pass, Judged(Verdict::Pass)), Verdict::Pass);
    EXPECT_EQ(verdict(Outcome::Fail, Judged(Verdict::Fail)), Verdict::Pass) << "the judge says it already";
    EXPECT_EQ(verdict(Outcome::Fail, Judged(Verdict::Inconclusive)), Verdict::Fail);
    EXPECT_EQ(verdict(Outcome::Timeout, Judged(Verdict::Fail)), Verdict::Fail);
    EXPECT_EQ(verdict(Outcome::Environment, std::nullopt), Verdict::Environment);
    EXPECT_EQ(verdict(Outcome::Interrupted, std::nullopt), Verdict::Inconclusive);
    EXPECT_EQ(CheckOf({Outcome::Timeout, "why"}, std::nullopt).found, "why");
}

TEST(Outcome, HasAnExitStatus) {
    EXPECT_EQ(ExitStatusOf(Outcome::Pass), 0);
    EXPECT_EQ(ExitStatusOf(Outcome::KnownFailure), 0);
    EXPECT_EQ(ExitStatusOf(Outcome::Fail), 1);
    EXPECT_EQ(ExitStatusOf(Outcome::Timeout), 1);
    EXPECT_EQ(ExitStatusOf(Outcome::Inconclusive), 2);
    EXPECT_EQ(ExitStatusOf(Outcome::NotReached), 2);
    EXPECT_EQ(ExitStatusOf(Outcome::NotRun), 2);
    EXPECT_EQ(ExitStatusOf(Outcome::Running), 2);
    EXPECT_EQ(ExitStatusOf(Outcome::Environment), 3);
    EXPECT_EQ(ExitStatusOf(Outcome::Interrupted), 130);
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
