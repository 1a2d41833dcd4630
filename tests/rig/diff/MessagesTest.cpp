#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"

using namespace rig::diff;

namespace {

TEST(Messages, ThatComeAgainAreCounted) {
    const CaseComparison compared =
        CompareRuns({RunWith({"DVR OK", "DVR EVENT"})}, {RunWith({"DVR OK", "DVR EVENT", "DVR EVENT"})});
    EXPECT_EQ(compared.change, Change::Changed);
    ASSERT_EQ(compared.differences.size(), 2U);
    EXPECT_EQ(compared.differences[0].before, "the end after 2");
    EXPECT_EQ(compared.differences[0].after, "DVR EVENT as message 3");
    EXPECT_EQ(compared.differences[1].subject, "number of messages");
    EXPECT_EQ(compared.differences[1].before, "DVR EVENT 1");
    EXPECT_EQ(compared.differences[1].after, "DVR EVENT 2");
}

TEST(Messages, InTheOrderOfAnEarlierRunAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunWith({"a", "b"}), RunWith({"b", "a"})}, {RunWith({"b", "a"})}).change,
              Change::Same);
}

TEST(Messages, DivergeFromTheEarlierRunThatTheyAreMostLike) {
    ExpectOnly(CompareRuns({RunWith({"x", "y", "z"}), RunWith({"y", "z", "x"}), RunWith({"y", "a"})},
                           {RunWith({"y", "x", "z"})}),
               Change::Changed, "order of messages", "z as message 2", "x as message 2");
}

TEST(Messages, WhoseNumberVariedBeforeAreCountedOnlyBeyondThat) {
    const std::vector<CaseRun> before = {RunWith({"a"}), RunWith({"a", "a", "a"})};
    EXPECT_EQ(CompareRuns(before, {RunWith({"a", "a"})}).differences.size(), 1U);  // the order only
    EXPECT_EQ(CompareRuns({RunWith({"a", "a"})}, before).differences.size(), 1U);
    const CaseComparison compared = CompareRuns(before, {RunWith({"a", "a", "a", "a"})});
    ASSERT_EQ(compared.differences.size(), 2U);
    EXPECT_EQ(compared.differences[1].before, "a 1 to 3");
    EXPECT_EQ(compared.differences[1].after, "a 4");
}

}  // namespace
