#include <gtest/gtest.h>

#include "tests/rig/diff/MadeUp.h"
#include "tests/rig/history/MadeUpCourse.h"

using namespace rig::history;

namespace {

/// @return what is unsteady over days with these notes and outcomes
std::vector<UnsteadyCase> UnsteadyOver(
    const std::vector<std::pair<std::string, std::vector<std::string>>>& days) {
    std::vector<CampaignDigest> campaigns;
    for (const auto& [note, outcomes] : days) {
        std::vector<rig::diff::CaseRun> runs;
        for (const std::string& outcome : outcomes) {
            runs.push_back(RunThat(outcome));
        }
        campaigns.push_back(DayWith(static_cast<int>(campaigns.size()) + 1, note, runs));
    }
    return HistoryOf(std::move(campaigns), Order::Time).unsteady;
}

TEST(Unsteady, IsACaseWhoseOutcomeChangesWithTheSameNote) {
    const auto unsteady =
        UnsteadyOver({{"1", {"PASS"}}, {"1", {"FAIL"}}, {"2", {"PASS"}}, {"1", {"FAIL"}}, {"1", {"PASS"}}});
    ASSERT_EQ(unsteady.size(), 1U);
    EXPECT_EQ(unsteady[0].changes, 2U);
    EXPECT_EQ(unsteady[0].chances, 3U);
    ASSERT_EQ(unsteady[0].firmwares.size(), 1U);
    EXPECT_EQ(unsteady[0].firmwares[0].note, "1");
    EXPECT_EQ(unsteady[0].firmwares[0].outcomes,
              (std::map<std::string, std::size_t>{{"FAIL", 2}, {"PASS", 2}}));
}

TEST(Unsteady, IsNotACaseThatChangesWithItsFirmware) {
    EXPECT_TRUE(UnsteadyOver({{"1", {"PASS"}}, {"2", {"FAIL"}}, {"3", {"PASS"}}}).empty());
}

TEST(Unsteady, IsNotACaseOfUnknownFirmwares) {
    EXPECT_TRUE(UnsteadyOver({{"", {"PASS"}}, {"", {"FAIL"}}}).empty());
}

TEST(Unsteady, IsNotACaseWhoseFailureBecameKnown) {
    EXPECT_TRUE(UnsteadyOver({{"1", {"FAIL"}}, {"1", {"KNOWN FAILURE"}}, {"1", {"FAIL"}}}).empty());
    EXPECT_EQ(UnsteadyOver({{"1", {"FAIL"}}, {"1", {"TIMEOUT"}}}).size(), 1U);
}

TEST(Unsteady, IsACaseWhoseRunsInOneCampaignDiffer) {
    const auto unsteady = UnsteadyOver({{"", {"PASS", "PASS", "TIMEOUT"}}, {"", {"PASS", "PASS"}}});
    ASSERT_EQ(unsteady.size(), 1U);
    EXPECT_EQ(unsteady[0].changes, 1U);
    EXPECT_EQ(unsteady[0].chances, 3U);
}

TEST(Unsteady, IsNotToldByWhatSaysNothingOfTheRecorder) {
    for (const char* const outcome : {"NOT RUN", "RUNNING", "INTERRUPTED", "ENVIRONMENT"}) {
        EXPECT_TRUE(UnsteadyOver({{"1", {"PASS"}}, {"1", {outcome}}, {"1", {"PASS"}}}).empty()) << outcome;
    }
    EXPECT_EQ(UnsteadyOver({{"1", {"PASS"}}, {"1", {"NOT RUN"}}, {"1", {"INCONCLUSIVE"}}}).at(0).chances, 1U);
}

}  // namespace
