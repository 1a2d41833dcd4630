#include <gtest/gtest.h>

#include "rig/campaign/evidence/Records.h"

namespace rig::campaign {
namespace {

CaseRecord Timed(const std::string& name, Outcome outcome, double duration = 1) {
    CaseRecord record;
    record.plan.name = name;
    record.outcome = outcome;
    record.times.duration = duration;
    record.timings = {{"GET_FILE", 3, duration * 10, 0, 0, duration * 20}};
    return record;
}

TEST(CampaignRecord, ComesToTheWorstOfItsCases) {
    CampaignRecord campaign;
    EXPECT_EQ(campaign.Whole(), Outcome::NotRun) << "a campaign that ran no case proves nothing";
    campaign.cases = {Timed("a", Outcome::Pass)};
    EXPECT_EQ(campaign.Whole(), Outcome::Pass);
    campaign.knownUnseen = {"x.answer"};
    EXPECT_EQ(campaign.Whole(), Outcome::Fail) << "the list of known failures is wrong";
    campaign.knownUnseen.clear();
    campaign.cases.push_back(Timed("b", Outcome::NotRun));
    EXPECT_EQ(campaign.Whole(), Outcome::NotRun);
    campaign.cases.push_back(Timed("c", Outcome::Fail));
    EXPECT_EQ(campaign.Whole(), Outcome::Fail);
    EXPECT_EQ(campaign.Counts(), (std::map<std::string, int>{{"PASS", 1}, {"NOT RUN", 1}, {"FAIL", 1}}));
    campaign.state = "interrupted";
    EXPECT_EQ(campaign.Whole(), Outcome::Interrupted);
}

TEST(CampaignRecord, ShowsHowTheRunsOfACaseDiffer) {
    CampaignRecord campaign;
    campaign.cases = {Timed("a", Outcome::Pass, 3), Timed("a", Outcome::Fail, 1),
                      Timed("a", Outcome::Pass, 2), Timed("a", Outcome::NotRun, 0)};
    EXPECT_TRUE(campaign.Spreads().empty()) << "one run has no spread";
    campaign.repeat = 4;
    const std::vector<Spread> spreads = campaign.Spreads();
    ASSERT_EQ(spreads.size(), 1U);
    EXPECT_EQ(spreads[0].outcomes, (std::map<std::string, int>{{"PASS", 2}, {"FAIL", 1}}));
    EXPECT_EQ(spreads[0].durations, (std::vector<double>{1, 2, 3}));
    ASSERT_EQ(spreads[0].reactions.size(), 1U);
    EXPECT_EQ(spreads[0].reactions[0].least, 10);
    EXPECT_EQ(spreads[0].reactions[0].most, 30);
    EXPECT_EQ(spreads[0].reactions[0].longest, 60);
}

}  // namespace
}  // namespace rig::campaign
