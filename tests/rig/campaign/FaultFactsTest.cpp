#include <fmt/format.h>
#include <gtest/gtest.h>

#include "rig/campaign/execution/FaultFacts.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::campaign {
namespace {

using result::Verdict;

/// An export that came to this end, with these checks and verdicts.
CaseFacts Ended(End end, const std::vector<std::pair<std::string_view, Verdict>>& checks) {
    CaseFacts facts;
    facts.end = end;
    facts.words = "why";
    facts.harness = Ending{kInterruptedHarness, {}};
    facts.isStopped = facts.isConnected = true;
    facts.isDone = end == End::Done;
    facts.judged.emplace();
    for (const auto& [id, verdict] : checks) {
        facts.judged->checks.push_back({id, "", verdict, "", "found it", {}});
    }
    return facts;
}

/// @return "OUTCOME|reason|check, check"
std::string Show(const CaseFacts& facts) {
    const Decision decision = Decide(facts);
    std::string ids;
    for (const result::CheckResult& check : facts.judged->checks) {
        ids += fmt::format("{}{}", ids.empty() ? "" : ", ", check.id);
    }
    return fmt::format("{}|{}|{}", NameOf(decision.outcome), decision.reason, ids);
}

const std::vector<std::pair<std::string_view, Verdict>> kBrokenOff = {{"harness.ran", Verdict::Pass},
                                                                      {"export.done", Verdict::Fail},
                                                                      {"fault.acted", Verdict::Pass},
                                                                      {"fault.answer", Verdict::Pass}};

/// @return what an export with a fault of that duty, which has failed at that end, comes to
std::string LeftTo(fault::Duty duty, End end) {
    CaseFacts facts = Ended(end, kBrokenOff);
    fault::Fault fault;
    fault.duty = duty;
    Case plan;
    plan.fault = fault::FaultCase{&fault, "", "GET_FILE", 2};
    LeaveToTheFault(facts, plan);
    return Show(facts);
}

TEST(FaultFacts, ShowWhetherTheFaultHasActed) {
    EXPECT_TRUE(HasActed(Ended(End::Done, {{"fault.answer", Verdict::Fail}})));
    EXPECT_FALSE(HasActed(Ended(End::Interrupted, {{"fault.answer", Verdict::Pass}})));
    EXPECT_FALSE(HasActed(Ended(End::Done, {{"fault.acted", Verdict::Inconclusive}})));
    EXPECT_FALSE(HasActed(Ended(End::Done, {{"export.done", Verdict::Pass}})));
    EXPECT_FALSE(HasActed({})) << "nothing was judged";
}

TEST(FaultFacts, LeaveNothingToALegalFault) {
    const std::string all = "harness.ran, export.done, fault.acted, fault.answer";
    EXPECT_EQ(LeftTo(fault::Duty::GoesOn, End::Done), "FAIL|export.done: found it|" + all);
    EXPECT_EQ(LeftTo(fault::Duty::GoesOn, End::Lost), "FAIL|export.done: found it; why|" + all);
}

TEST(FaultFacts, LeaveTheEndToADvrThatRefuses) {
    EXPECT_EQ(LeftTo(fault::Duty::Refuses, End::Lost), "PASS||harness.ran, fault.acted, fault.answer");
    EXPECT_EQ(LeftTo(fault::Duty::Refuses, End::Done),
              "FAIL|export.done: found it|harness.ran, export.done, fault.acted, fault.answer")
        << "it went on, and must do that well";
}

TEST(FaultFacts, LeaveAllButTheFaultToADvrThatSurvives) {
    for (const End end : {End::Done, End::Lost, End::HarnessEnded, End::ConnectTimeout}) {
        EXPECT_EQ(LeftTo(fault::Duty::Survives, end), "PASS||harness.ran, fault.acted, fault.answer")
            << NameOf(end);
    }
}

/// @return what a good export with a fault comes to after that recovery
std::string After(const CaseFacts& recovery) {
    CaseFacts facts = Ended(End::Done, {{"fault.acted", Verdict::Pass}});
    AddRecovery(facts, recovery);
    return Show(facts);
}

TEST(FaultFacts, CountTheRecovery) {
    EXPECT_EQ(After(Ended(End::Done, {{"x", Verdict::Pass}})), "PASS||fault.acted, recovery");
    EXPECT_EQ(After(Ended(End::Done, {{"x", Verdict::Fail}})),
              "FAIL|recovery: x: found it|fault.acted, recovery");
    EXPECT_EQ(After(Ended(End::Done, {{"x", Verdict::KnownFailure}})),
              "KNOWN FAILURE|recovery: x: found it|fault.acted, recovery");
    EXPECT_EQ(After(Ended(End::ConnectTimeout, {{"x", Verdict::Pass}})),
              "FAIL|recovery: why; the judge says PASS|fault.acted, recovery")
        << "the DVR does not call again";
    EXPECT_EQ(After(Ended(End::NoEvents, {{"x", Verdict::Pass}})),
              "INCONCLUSIVE|recovery: why|fault.acted, recovery");
}

TEST(FaultFacts, BlameTheFaultForADvrThatHasEnded) {
    EXPECT_EQ(After(Ended(End::DvrFailed, {{"x", Verdict::Inconclusive}})),
              "FAIL|recovery: why|fault.acted, recovery");
}

TEST(FaultFacts, BlameTheRigForItsOwnFailures) {
    CaseFacts crashed = Ended(End::HarnessEnded, {{"x", Verdict::Pass}});
    crashed.isStopped = false;
    crashed.harness = Ending{{}, 11};
    EXPECT_EQ(After(crashed).substr(0, 12), "ENVIRONMENT|") << After(crashed);
    EXPECT_EQ(After(Ended(End::Interrupted, {{"x", Verdict::Pass}})), "INTERRUPTED|why|fault.acted");
    EXPECT_EQ(After(Ended(End::PortTaken, {{"x", Verdict::Pass}})), "ENVIRONMENT|why|fault.acted");
}

TEST(FaultFacts, QuoteWhatTheShellReads) {
    Rig rig;
    rig.proxy = "rig proxy";
    rig.harness = "velloran";
    rig.seed = 7;
    const TemporaryFolder temporary;
    const CaseFolder folder(temporary.Path().string() + "/it's here");
    const std::string log = temporary.Path().string() + "/it'\\''s here/proxy.jsonl";
    Case plan{"x", 2, "-p 2 -c 1", ""};
    EXPECT_EQ(ProxiedCommand(rig, folder, plan, true),
              "rig proxy --listen 5001 --once --log '" + log + "' --harness-command 'velloran -p 2 -c 1'");
    plan.fault = fault::Choose("split=2@DONE-1.0").at(0);
    EXPECT_EQ(ProxiedCommand(rig, folder, plan, true),
              "rig proxy --listen 5001 --once --log '" + log +
                  "' --fault 'split=2' --on DONE --seed 7 --harness-command 'velloran -p 2 -c 1'");
}

}  // namespace
}  // namespace rig::campaign
