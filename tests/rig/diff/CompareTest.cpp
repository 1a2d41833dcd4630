#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"

using namespace rig::diff;

namespace {

CaseRun RunWithCheck(const std::string& verdict, const std::string& found) {
    CaseRun run = RunThat("PASS");
    run.checks.emplace_back("event-list.source", Check{verdict, found});
    return run;
}

TEST(Verdicts, ThatAreTheSameAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunThat("PASS")}, {RunThat("PASS")}).change, Change::Same);
    EXPECT_EQ(CompareRuns({RunThat("FAIL", "reason")}, {RunThat("FAIL", "reason")}).change, Change::Same);
}

TEST(Verdicts, ToPassIsBetter) {
    for (const char* before :
         {"FAIL", "TIMEOUT", "ENVIRONMENT", "INCONCLUSIVE", "NOT REACHED", "KNOWN FAILURE", "NOT RUN"}) {
        EXPECT_EQ(ChangeOf(before, "PASS"), Change::Better) << before;
    }
}

TEST(Verdicts, NoLongerToPassIsWorse) {
    for (const char* after :
         {"FAIL", "TIMEOUT", "ENVIRONMENT", "INCONCLUSIVE", "NOT REACHED", "KNOWN FAILURE", "NOT RUN"}) {
        EXPECT_EQ(ChangeOf("PASS", after), Change::Worse) << after;
    }
}

TEST(Verdicts, ToWarnIsWorseThanToPassAndBetterThanToFail) {
    EXPECT_EQ(ChangeOf("PASS", "WARNING"), Change::Worse);
    EXPECT_EQ(ChangeOf("WARNING", "PASS"), Change::Better);
    EXPECT_EQ(ChangeOf("FAIL", "WARNING"), Change::Better);
    EXPECT_EQ(ChangeOf("WARNING", "FAIL"), Change::Worse);
    EXPECT_EQ(ChangeOf("INCONCLUSIVE", "WARNING"), Change::Changed);
    ExpectOnly(CompareRuns({RunWithCheck("PASS", "fine")}, {RunWithCheck("WARNING", "not so fine")}),
               Change::Worse, "check event-list.source", "PASS: fine", "WARNING: not so fine");
}

TEST(Verdicts, ToFailIsWorseWhereItDidNotFail) {
    for (const char* before : {"INCONCLUSIVE", "ENVIRONMENT", "NOT REACHED", "KNOWN FAILURE"}) {
        EXPECT_EQ(ChangeOf(before, "FAIL"), Change::Worse) << before;
        EXPECT_EQ(ChangeOf(before, "TIMEOUT"), Change::Worse) << before;
    }
}

TEST(Verdicts, ThatNeitherPassNorFailNewlyAreNeither) {
    EXPECT_EQ(ChangeOf("FAIL", "TIMEOUT"), Change::Changed);
    EXPECT_EQ(ChangeOf("FAIL", "INCONCLUSIVE"), Change::Changed);
    EXPECT_EQ(ChangeOf("NOT REACHED", "INCONCLUSIVE"), Change::Changed);
}

TEST(Verdicts, OfACheckAreComparedWithWhatWasFound) {
    ExpectOnly(CompareRuns({RunWithCheck("PASS", "nothing else")}, {RunWithCheck("FAIL", "no source")}),
               Change::Worse, "check event-list.source", "PASS: nothing else", "FAIL: no source");
}

TEST(Verdicts, ThatFailForAnotherReasonAreAChange) {
    ExpectOnly(CompareRuns({RunWithCheck("FAIL", "one")}, {RunWithCheck("FAIL", "two")}), Change::Changed,
               "check event-list.source", "FAIL: one", "FAIL: two");
}

TEST(Verdicts, ThatPassWithOtherWordsAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunWithCheck("PASS", "one")}, {RunWithCheck("PASS", "two")}).change, Change::Same);
}

TEST(Verdicts, OfSeveralRunsAreTheWorst) {
    ExpectOnly(CompareRuns({RunThat("PASS"), RunThat("PASS")},
                           {RunThat("PASS"), RunThat("TIMEOUT", "too long"), RunThat("PASS")}),
               Change::Worse, "outcome", "PASS in 2 of 2 runs", "TIMEOUT in 1 of 3 runs: too long");
}

TEST(Verdicts, ThatFailForAReasonWithOtherDetailsAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunThat("FAIL", "no answer (after 5.1 s)")},
                          {RunThat("FAIL", "no answer (after 5.2 s)")})
                  .change,
              Change::Same);
}

TEST(Verdicts, ThatFailForAReasonOfAnEarlierRunAreNotAChange) {
    EXPECT_EQ(
        CompareRuns({RunWithCheck("FAIL", "one"), RunWithCheck("FAIL", "two")}, {RunWithCheck("FAIL", "two")})
            .change,
        Change::Same);
}

TEST(Verdicts, OfACheckThatOnlyOneJudgeKnowsAreLeftOut) {
    EXPECT_EQ(CompareRuns({RunThat("PASS")}, {RunWithCheck("FAIL", "no source")}).change, Change::Same);
}

TEST(Case, ThatGotWorseAndBetterIsWorse) {
    CaseRun before = RunThat("PASS");
    CaseRun after = RunThat("PASS");
    before.checks = {{"one", {"PASS", ""}}, {"two", {"FAIL", ""}}};
    after.checks = {{"one", {"FAIL", ""}}, {"two", {"PASS", ""}}};
    const CaseComparison compared = CompareRuns({before}, {after});
    EXPECT_EQ(compared.change, Change::Worse);
    EXPECT_EQ(compared.differences.size(), 2U);
}

TEST(Case, ThatPassedAndIsMissingIsWorse) {
    const Campaign before = CampaignOf({RunThat("PASS")});
    Campaign after = CampaignOf({RunThat("PASS")});
    after.cases.front().name = "other-2.0";
    const Comparison comparison = Compare(before, after);
    ASSERT_EQ(comparison.cases.size(), 2U);
    ExpectOnly(comparison.cases[0], Change::Changed, "outcome", "no such case", "PASS");
    ExpectOnly(comparison.cases[1], Change::Worse, "outcome", "PASS", "no such case");
    EXPECT_EQ(comparison.Words(), "1 case worse, 0 better, 1 changed, 0 the same");
}

TEST(Case, ThatFailedAndIsMissingIsAChange) {
    Campaign after = CampaignOf({RunThat("PASS")});
    after.cases.front().name = "other-2.0";
    EXPECT_EQ(Compare(CampaignOf({RunThat("FAIL")}), after).Count(Change::Changed), 2U);
}

TEST(Surroundings, ThatDifferAreNamed) {
    Campaign before = CampaignOf({RunThat("PASS")});
    Campaign after = CampaignOf({RunThat("PASS")});
    before.versions = {{"host", "rig"}, {"velloran-rig", "1"}};
    after.versions = {{"host", "rig"}, {"velloran-rig", "2"}, {"system", "Linux"}};
    const Comparison comparison = Compare(before, after);
    ASSERT_EQ(comparison.surroundings.size(), 2U);
    EXPECT_EQ(comparison.surroundings[0].subject, "system");
    EXPECT_EQ(comparison.surroundings[0].before, "not known");
    EXPECT_EQ(comparison.surroundings[1].subject, "velloran-rig");
    EXPECT_EQ(comparison.surroundings[1].after, "2");
    EXPECT_EQ(comparison.Count(Change::Same), 1U);
}

}  // namespace
