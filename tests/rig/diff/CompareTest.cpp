#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"

using namespace rig::diff;

namespace {

CaseRun RunWithCheck(const std::string& verdict, const std::string& found) {
    CaseRun run = RunThat("PASS");
    run.checks.emplace_back("event-list.source", Check{verdict, found});
    return run;
}

TEST(Surroundings, NamePartsOfACampaign) {
    const Campaign whole = CampaignOf({RunThat("PASS")});
    Campaign part = whole;
    part.shard = "1 of 2";
    const std::vector<Difference> differences = Compare(whole, part).surroundings;
    ASSERT_EQ(differences.size(), 1U);
    EXPECT_EQ(differences[0].subject, "part");
    EXPECT_EQ(differences[0].before, "the whole");
    EXPECT_EQ(differences[0].after, "1 of 2");
    EXPECT_TRUE(Compare(part, part).surroundings.empty());
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

TEST(Verdicts, ThatFailForAReasonOfAnEarlierRunAreNotAChange) {
    EXPECT_EQ(
        CompareRuns({RunWithCheck("FAIL", "one"), RunWithCheck("FAIL", "two")}, {RunWithCheck("FAIL", "two")})
            .change,
        Change::Same);
}

}  // namespace
