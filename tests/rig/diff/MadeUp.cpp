#include "tests/rig/diff/MadeUp.h"

#include <gtest/gtest.h>

using namespace rig::diff;

CaseRun RunThat(const std::string& outcome, const std::string& reason) {
    CaseRun run;
    run.folder = "cases/xfer-2.0";
    run.outcome = outcome;
    run.reason = reason;
    return run;
}

CaseRun RunWith(const std::vector<std::string>& messages) {
    CaseRun run = RunThat("PASS");
    run.messages = messages;
    return run;
}

Campaign CampaignOf(std::vector<CaseRun> runs) {
    Campaign campaign;
    campaign.folder = "folder";
    campaign.state = "finished";
    campaign.cases.push_back({"xfer-2.0", "-p 2 -x", std::move(runs)});
    return campaign;
}

CaseComparison CompareRuns(std::vector<CaseRun> before, std::vector<CaseRun> after) {
    const Campaign was = CampaignOf(std::move(before));
    const Campaign is = CampaignOf(std::move(after));
    CaseComparison compared = Compare(was, is).cases.at(0);
    compared.before = nullptr;  // they end here
    compared.after = nullptr;
    return compared;
}

void ExpectOnly(const CaseComparison& compared, Change change, const std::string& subject,
                const std::string& before, const std::string& after) {
    EXPECT_EQ(compared.change, change);
    ASSERT_EQ(compared.differences.size(), 1U);
    const Difference& difference = compared.differences.front();
    EXPECT_EQ(difference.change, change);
    EXPECT_EQ(difference.subject, subject);
    EXPECT_EQ(difference.before, before);
    EXPECT_EQ(difference.after, after);
}
