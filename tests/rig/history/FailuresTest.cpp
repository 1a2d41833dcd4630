#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"
#include "tests/rig/history/MadeUpCourse.h"

using namespace rig::history;

namespace {

TEST(Failures, BeganWithTheFirstOfThePresentRunOfThem) {
    const History history = HistoryOfRuns(
        {RunChecked("FAIL"), RunChecked("PASS"), RunChecked("FAIL", "first"), RunChecked("FAIL", "last")});
    ASSERT_EQ(history.failures.size(), 1U);
    const Failure& failure = history.failures.front();
    EXPECT_EQ(*failure.check, "event-list.source");
    EXPECT_EQ(failure.since, 2U);
    EXPECT_EQ(failure.last, 3U);
    EXPECT_EQ(failure.passed, 1U);
    EXPECT_EQ(*failure.found, "last");
    EXPECT_EQ(failure.folder, "cases/xfer-2.0");
    EXPECT_TRUE(failure.hasPage);
}

TEST(Failures, ThatNeverPassedHaveNoLastPass) {
    EXPECT_EQ(HistoryOfRuns({RunChecked("FAIL")}).failures.at(0).passed, std::nullopt);
}

TEST(Failures, EndWithAPassOrAWarning) {
    EXPECT_TRUE(HistoryOfRuns({RunChecked("FAIL"), RunChecked("PASS")}).failures.empty());
    EXPECT_TRUE(HistoryOfRuns({RunChecked("FAIL"), RunChecked("WARNING")}).failures.empty());
}

TEST(Failures, GoOnWhereACampaignCannotTell) {
    for (const char* const verdict : {"NOT REACHED", "INCONCLUSIVE", "ENVIRONMENT"}) {
        const History history =
            HistoryOfRuns({RunChecked("FAIL"), RunChecked(verdict), RunChecked("FAIL"), RunChecked(verdict)});
        ASSERT_EQ(history.failures.size(), 1U) << verdict;
        EXPECT_EQ(history.failures.front().since, 0U) << verdict;
        EXPECT_EQ(history.failures.front().last, 2U) << verdict;
    }
}

TEST(Failures, ThatAreKnownAreFailures) {
    const History history =
        HistoryOfRuns({RunChecked("PASS"), RunChecked("FAIL"), RunChecked("KNOWN FAILURE")});
    ASSERT_EQ(history.failures.size(), 1U);
    EXPECT_EQ(history.failures.front().since, 1U);
    EXPECT_EQ(*history.failures.front().verdict, "KNOWN FAILURE");
}

TEST(Failures, OfOneOfSeveralRunsAreFailures) {
    const History history = HistoryOf(
        {DayWith(1, "a", {RunChecked("PASS"), RunChecked("FAIL", "it"), RunChecked("PASS")})}, Order::Time);
    ASSERT_EQ(history.failures.size(), 1U);
    EXPECT_EQ(*history.failures.front().found, "it");
}

TEST(Failures, AreNotWhatACampaignLeftOut) {
    rig::diff::Campaign part = CampaignOf({RunThat("PASS")});
    part.cases.front().name = "another-2.0";
    const History history = HistoryOf({DayWith(1, "a", {RunChecked("PASS")}), DayOf(2, part)}, Order::Time);
    EXPECT_TRUE(history.failures.empty());
    ASSERT_EQ(history.cases.size(), 2U);
    EXPECT_EQ(*history.cases[0].name, "another-2.0") << "those of the last campaign first";
    EXPECT_EQ(history.cases[0].cells.size(), 1U);
}

TEST(Failures, ThatAreAlikeInSeveralCasesStandOnce) {
    rig::diff::Campaign campaign = CampaignOf({RunChecked("FAIL", "it (at 1.5 s)")});
    campaign.cases.push_back({"event-2.0", "-p 2 -e", {RunChecked("FAIL", "it (at 2.5 s)")}});
    campaign.cases.push_back({"file-2.0", "-p 2 -f", {RunChecked("FAIL", "something else")}});
    const History history = HistoryOf({DayOf(1, campaign)}, Order::Time);
    ASSERT_EQ(history.failures.size(), 2U);
    ASSERT_EQ(history.failures[0].cases.size(), 2U);
    EXPECT_EQ(*history.failures[0].cases[1], "event-2.0");
    EXPECT_EQ(*history.failures[1].found, "something else");
}

}  // namespace
