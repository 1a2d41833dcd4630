#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"
#include "tests/rig/history/MadeUpCourse.h"

using namespace rig::history;

namespace {

rig::diff::CaseRun RunIn(double median, double percentile95) {
    rig::diff::CaseRun run = RunThat("PASS");
    run.reactions["GET_FILE"] = {median, percentile95};
    return run;
}

/// @return the marks over days with these reactions, as their number and what changed
std::vector<std::pair<std::size_t, bool>> MarksOver(const std::vector<rig::diff::CaseRun>& days) {
    std::vector<std::pair<std::size_t, bool>> marks;
    const History history = HistoryOfRuns(days);
    for (const ReactionCourse::Mark& mark : history.reactions.at(0).marks) {
        marks.emplace_back(mark.point, mark.isSlower);
    }
    return marks;
}

using Marks = std::vector<std::pair<std::size_t, bool>>;

TEST(ReactionCourses, WithinTheSpreadHaveNoMark) {
    EXPECT_EQ(MarksOver({RunIn(100, 200), RunIn(190, 210), RunIn(150, 300)}), Marks());
}

TEST(ReactionCourses, AreMarkedWhereTheyGotSlowerAndFaster) {
    EXPECT_EQ(MarksOver({RunIn(50, 60), RunIn(55, 65), RunIn(150, 160), RunIn(151, 160), RunIn(50, 60)}),
              (Marks{{2, true}, {4, false}}));
}

TEST(ReactionCourses, AreComparedWithAllOfTheTenBefore) {
    std::vector<rig::diff::CaseRun> days = {RunIn(50, 190)};
    days.resize(10, RunIn(50, 60));
    days.push_back(RunIn(150, 160));
    EXPECT_EQ(MarksOver(days), Marks()) << "the first took as long";
    days.insert(days.begin() + 1, RunIn(50, 60));
    EXPECT_EQ(MarksOver(days), (Marks{{11, true}})) << "the first is too long ago";
}

TEST(ReactionCourses, SkipCampaignsThatDoNotHaveThem) {
    const History history = HistoryOfRuns({RunIn(50, 60), RunThat("PASS"), RunIn(150, 160)});
    const ReactionCourse& course = history.reactions.at(0);
    ASSERT_EQ(course.points.size(), 2U);
    EXPECT_EQ(course.points[1].build, 2U);
    ASSERT_EQ(course.marks.size(), 1U);
    EXPECT_DOUBLE_EQ(course.marks[0].before.most, 60);
}

TEST(ReactionCourses, OfSeveralRunsHaveTheirWholeSpread) {
    const History history =
        HistoryOf({DayWith(1, "a", {RunIn(30, 70), RunIn(10, 20), RunIn(20, 50)})}, Order::Time);
    const ReactionDigest& digest = history.reactions.at(0).points.at(0).digest;
    EXPECT_DOUBLE_EQ(digest.median, 20);
    EXPECT_DOUBLE_EQ(digest.span.typical, 10);
    EXPECT_DOUBLE_EQ(digest.span.most, 70);
}

TEST(ReactionCourses, AreInOrderOfTheirRequestsWithTheMarkedFirst) {
    rig::diff::Campaign before = CampaignOf({RunIn(50, 60)});
    before.cases.push_back({"event-2.0", "-p 2 -e", {RunIn(50, 60)}});
    before.cases.front().runs.front().reactions["EVENT"] = {1, 1};
    rig::diff::Campaign after = before;
    after.cases.back().runs.front().reactions["GET_FILE"] = {150, 160};
    const History history = HistoryOf({DayOf(1, before), DayOf(2, after)}, Order::Time);
    std::string order;
    for (const ReactionCourse& course : history.reactions) {
        order += *course.request + " in " + *course.name + ". ";
    }
    EXPECT_EQ(order, "EVENT in xfer-2.0. GET_FILE in event-2.0. GET_FILE in xfer-2.0. ");
}

}  // namespace
