#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"
#include "tests/rig/history/MadeUpCourse.h"

using namespace rig::history;

namespace {

/// @return the folders that count, in order, then what is said of the others
std::string Counted(std::vector<CampaignDigest> campaigns, Order order = Order::Time) {
    const History history = HistoryOf(std::move(campaigns), order);
    std::string folders;
    for (const Build& build : history.builds) {
        folders += build.facts.folder + " ";
    }
    for (const LeftOut& one : history.leftOut) {
        folders += "| " + one.folder + ": " + one.reason + " ";
    }
    return folders;
}

CampaignDigest In(const std::string& folder, CampaignDigest digest) {
    digest.facts.folder = folder;
    return digest;
}

/// @return a campaign that was merged of those that began on these days
CampaignDigest MergedOf(int day, const std::vector<int>& days) {
    CampaignDigest merged = DayWith(day, "a", {RunThat("PASS")});
    merged.facts.folder = "merged" + std::to_string(day);
    merged.facts.fingerprint = 100 + merged.cases.size();
    for (const int one : days) {
        merged.facts.parts.push_back({one, 1, "a"});
    }
    return merged;
}

CampaignDigest Day(int day, const std::string& note = "a") {
    return DayWith(day, note, {RunThat("PASS")});
}

TEST(Campaigns, AreInOrderOfTimeWhateverTheirNotes) {
    EXPECT_EQ(Counted({Day(3, "1"), Day(1, "2"), Day(2, "3")}), "day1 day2 day3 ");
}

TEST(Campaigns, AreInOrderOfTheirNotesThenOfTime) {
    EXPECT_EQ(Counted({Day(1, "1.10"), Day(4, "1.9"), Day(3, "1.9"), Day(2, "")}, Order::Note),
              "day2 day3 day4 day1 ");
}

TEST(Campaigns, ThatAreCopiesCountOnce) {
    EXPECT_EQ(Counted({In("one", Day(1)), In("two", Day(1)), Day(2)}),
              "one day2 | two: a copy of one, counted once ");
}

TEST(Campaigns, WithTheSameNoteAndTimeAreNotCopiesIfTheyDiffer) {
    CampaignDigest other = In("two", Day(1));
    other.facts.fingerprint = 7;
    EXPECT_EQ(Counted({In("one", Day(1)), other}), "one two ");
}

TEST(Campaigns, ThatWereMergedStandForTheirParts) {
    EXPECT_EQ(
        Counted({Day(1), MergedOf(1, {1, 2}), Day(2), Day(3)}),
        "merged1 day3 | day1: a part of merged1, counted there | day2: a part of merged1, counted there ");
}

TEST(Campaigns, ThatWereMergedOfTheSamePartsDoNotLeaveOutEachOther) {
    CampaignDigest other = MergedOf(1, {1, 2});
    other.facts.fingerprint = 7;
    EXPECT_EQ(Counted({MergedOf(1, {1, 2}), In("again", other)}),
              "merged1 | again: a part of merged1, counted there ");
}

}  // namespace
