#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "rig/campaign/Division.h"

namespace rig::campaign {
namespace {

using CaseNames = std::vector<std::string>;

CaseNames CaseNamesOf(const std::vector<Case>& plans) {
    CaseNames names;
    std::transform(plans.begin(), plans.end(), std::back_inserter(names),
                   [](const Case& plan) { return plan.name; });
    return names;
}

CaseNames Part(Selection selection, std::uint32_t index, std::uint32_t total) {
    selection.shard = Shard{index, total, {}};
    return CaseNamesOf(Select(selection));
}

int SecondsOf(const std::vector<Case>& plans) {
    return std::accumulate(plans.begin(), plans.end(), 0,
                           [](int sum, const Case& plan) { return sum + ExpectedSeconds(plan); });
}

bool IsChosen(const Case& plan, const Selection& selection) {
    return selection.bare || plan.role == Case::Role::Fault;
}

const Selection kSelections[] = {{"all", "both"},
                                 {"all", "2"},
                                 {"all", "both", true},
                                 {"xfer-2.0,config-1.0,clean-2.0", "2"},
                                 {"clean-2.0", "2"},
                                 {"all", "both", false, "quick"},
                                 {"all", "1", true, "framing"}};

class DivisionTest : public testing::TestWithParam<Selection> {};

TEST_P(DivisionTest, GivesEachCaseToOnePart) {
    const std::vector<Case> whole = Select(GetParam());
    for (const std::uint32_t total : {1U, 2U, 3U, 7U, 26U, 200U, 4'000'000'000U}) {
        std::vector<std::string> chosen;
        for (std::uint32_t index = 1; index <= std::min(total, 250U); ++index) {
            for (const Case& plan : PartOf(whole, {index, total, {}}, GetParam().bare)) {
                if (IsChosen(plan, GetParam())) {
                    chosen.push_back(plan.name);
                }
            }
        }
        std::vector<std::string> expected;
        for (const Case& plan : whole) {
            if (IsChosen(plan, GetParam())) {
                expected.push_back(plan.name);
            }
        }
        std::sort(chosen.begin(), chosen.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(chosen, expected) << total;
    }
}

TEST_P(DivisionTest, KeepsTheOrderOfTheWhole) {
    const CaseNames whole = CaseNamesOf(Select(GetParam()));
    for (std::uint32_t index = 1; index <= 3; ++index) {
        std::size_t after = 0;
        for (const std::string& name : Part(GetParam(), index, 3)) {
            const auto at =
                static_cast<std::size_t>(std::find(whole.begin(), whole.end(), name) - whole.begin());
            EXPECT_GE(at, after) << name;
            after = at + 1;
        }
        EXPECT_LE(after, whole.size());
    }
}

TEST_P(DivisionTest, MakesPartsOfAboutTheSameLength) {
    const std::vector<Case> whole = Select(GetParam());
    int longest = 0;
    int frames = 0;
    for (const Case& plan : whole) {
        longest = std::max(longest, ExpectedSeconds(plan));
        frames += IsChosen(plan, GetParam()) ? 0 : ExpectedSeconds(plan);
    }
    for (const std::uint32_t total : {2U, 3U, 5U}) {
        std::vector<int> seconds;
        for (std::uint32_t index = 1; index <= total; ++index) {
            seconds.push_back(SecondsOf(PartOf(whole, {index, total, {}}, GetParam().bare)));
        }
        const auto [least, most] = std::minmax_element(seconds.begin(), seconds.end());
        EXPECT_LE(*most - *least, longest + frames) << total;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, DivisionTest, testing::ValuesIn(kSelections));

TEST(Division, OfAllCasesStaysTheSame) {
    const Selection both = {"all", "both"};
    EXPECT_EQ(Part(both, 1, 3), (CaseNames{"clean-2.0", "done-2.0", "event-close-2.0", "file-transport-2.0",
                                           "faults-2.0", "config-size-2.0", "recovery-2.0"}));
    EXPECT_EQ(Part(both, 2, 3),
              (CaseNames{"clean-2.0", "size-2.0", "config-2.0", "close-late-2.0", "close-done-2.0",
                         "upgrade-config-2.0", "upgrade-event-2.0", "rehash-xfer-2.0", "recovery-2.0"}));
    EXPECT_EQ(Part(both, 3, 3),
              (CaseNames{"clean-1.0", "config-1.0", "size-1.0", "recovery-1.0", "clean-2.0", "event-2.0",
                         "file-2.0", "transport-2.0", "rehash-2.0", "xfer-2.0", "upgrade-2.0", "close-2.0",
                         "sleep-2.0", "transport-rehash-2.0", "recovery-2.0"}));
}

TEST(Division, LeavesPartsWithoutCasesTheCleanExports) {
    EXPECT_EQ(Part({"xfer-2.0", "2"}, 2, 2), (CaseNames{"clean-2.0", "recovery-2.0"}));
    EXPECT_EQ(Part({"clean-2.0", "2"}, 2, 2), (CaseNames{"clean-2.0", "recovery-2.0"}));
    EXPECT_EQ(Part({"all", "2", false, "split=1@GET_FILE-2.0"}, 2, 2), CaseNames{"clean-2.0"});
    EXPECT_EQ(Part({"xfer-2.0", "2", true}, 2, 2), CaseNames());
}

TEST(Division, GivesAPartTheCleanExportsOfItsDialectsOnly) {
    EXPECT_EQ(Part({"xfer-2.0,config-1.0", "2"}, 1, 2), (CaseNames{"clean-2.0", "xfer-2.0", "recovery-2.0"}));
    EXPECT_EQ(Part({"xfer-2.0,config-1.0", "2"}, 2, 2),
              (CaseNames{"clean-1.0", "config-1.0", "recovery-1.0"}));
}

TEST(Division, IsWhatIsListed) {
    Selection selection = {"xfer-2.0,config-1.0", "2"};
    selection.shard = Shard{2, 2, {}};
    const std::string list = ListCases(selection);
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 3);
    EXPECT_EQ(list.substr(0, 9), "clean-1.0");
    selection = {"all", "2", false, "split=1@GET_FILE-2.0,split=2@GET_FILE-2.0"};
    selection.shard = Shard{2, 2, {}};
    EXPECT_EQ(ListCases(selection).substr(0, 22), "split=2@GET_FILE-2.0  ")
        << "without the clean export, as always";
}

}  // namespace
}  // namespace rig::campaign
