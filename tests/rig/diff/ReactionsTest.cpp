#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"

using namespace rig::diff;

namespace {

/// @return a run whose reactions to GET_FILE took this long, milliseconds
CaseRun RunThatTook(double median, double percentile95) {
    CaseRun run = RunThat("PASS");
    run.reactions["GET_FILE"] = {median, percentile95};
    return run;
}

TEST(Reactions, WithinTheSpreadAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunThatTook(100, 200)}, {RunThatTook(190, 300)}).change, Change::Same);
    EXPECT_EQ(CompareRuns({RunThatTook(190, 300)}, {RunThatTook(100, 200)}).change, Change::Same);
}

TEST(Reactions, WithinTheSpreadOfSeveralRunsAreNotAChange) {
    const std::vector<CaseRun> before = {RunThatTook(100, 110), RunThatTook(300, 310)};
    EXPECT_EQ(CompareRuns(before, {RunThatTook(250, 260)}).change, Change::Same);
    EXPECT_EQ(CompareRuns(before, {RunThatTook(500, 510)}).change, Change::Worse);
    EXPECT_EQ(CompareRuns({RunThatTook(100, 110)}, before).change, Change::Same);
}

TEST(Reactions, AFewMillisecondsSlowerAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunThatTook(1, 2)}, {RunThatTook(22, 23)}).change, Change::Same);
    EXPECT_EQ(CompareRuns({RunThatTook(1, 2)}, {RunThatTook(22.5, 23)}).change, Change::Worse);
}

TEST(Reactions, AFifthSlowerAreNotAChange) {
    EXPECT_EQ(CompareRuns({RunThatTook(1000, 1000)}, {RunThatTook(1200, 1200)}).change, Change::Same);
    EXPECT_EQ(CompareRuns({RunThatTook(1000, 1000)}, {RunThatTook(1201, 1201)}).change, Change::Worse);
}

}  // namespace
