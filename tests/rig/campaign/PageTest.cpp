#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "rig/campaign/evidence/CampaignFiles.h"

namespace rig::campaign {
namespace {

CaseRecord Record(const std::string& name, Outcome outcome) {
    CaseRecord record;
    record.plan = {name, 2, "-p 2 -x", "A sentence."};
    record.id = name;
    record.outcome = outcome;
    record.checks = {{"xfer.answer", "", result::Verdict::Fail, "", "nothing", {}}};
    record.files = {"harness.log", "report.html"};
    return record;
}

CampaignRecord Finished(std::vector<CaseRecord> cases) {
    CampaignRecord campaign;
    campaign.state = "finished";
    campaign.end = campaign.begin;
    campaign.cases = std::move(cases);
    return campaign;
}

class CampaignPageTest : public testing::Test {
 protected:
    void Make(const CampaignRecord& campaign) {
        ASSERT_TRUE(page_.load_string(CampaignPage(campaign).c_str()));
    }
    std::string Heading() const { return page_.select_node("//h1").node().text().get(); }
    /// @return where the first link of that text leads
    std::string Target(const std::string& text) const {
        return page_.select_node(("//a[.='" + text + "']/@href").c_str()).attribute().value();
    }

    pugi::xml_document page_;
};

TEST_F(CampaignPageTest, SaysFirstHowItCameOut) {
    Make(Finished({Record("a", Outcome::Pass), Record("b", Outcome::Fail)}));
    EXPECT_EQ(Heading(), "The DVR failed: 1 of 2 cases passed");
    Make(Finished({Record("a", Outcome::Pass)}));
    EXPECT_EQ(Heading(), "The DVR passed: 1 of 1 case passed");
    Make(Finished({Record("a", Outcome::Environment)}));
    EXPECT_EQ(Heading(), "The harness, a hook or the rig failed: 0 of 1 case passed");
    CampaignRecord stale = Finished({Record("a", Outcome::Pass)});
    stale.knownUnseen = {"xfer.answer"};
    Make(stale);
    EXPECT_EQ(Heading(), "The list of known failures must be fixed: 1 of 1 case passed");
    CampaignRecord running = Finished({Record("a", Outcome::Running)});
    running.state = "running";
    Make(running);
    EXPECT_EQ(Heading(), "The campaign is still running, or was killed");
}

TEST_F(CampaignPageTest, CountsTheOutcomesAndNamesTheirKinds) {
    CampaignRecord campaign =
        Finished({Record("a", Outcome::Pass), Record("b", Outcome::Timeout), Record("c", Outcome::Pass)});
    Make(campaign);
    EXPECT_STREQ(page_.select_node("//div[@class='bar']/@aria-label").attribute().value(),
                 "2 passed, 0 failed, 1 timed out");
    EXPECT_STREQ(page_.select_node("//header/p").node().child_value(), "TIMEOUT");
    EXPECT_FALSE(page_.select_node("//meta[@http-equiv='refresh']"));
}

TEST_F(CampaignPageTest, SaysHowFarARunningCampaignIsAndRenewsItself) {
    CampaignRecord campaign =
        Finished({Record("a", Outcome::Fail), Record("b", Outcome::Running), Record("c", Outcome::NotRun)});
    campaign.state = "running";
    campaign.cases[1].begin = 1'795'212'187'123'456;
    Make(campaign);
    EXPECT_STREQ(page_.select_node("//header/p").node().child_value(), "RUNNING");
    EXPECT_STREQ(page_.select_node("//p[@class='progress']").node().child_value(),
                 "1 of 3 cases done; b began at 2026-11-20T22:03:07Z. This page renews itself every 5 s.");
    EXPECT_TRUE(page_.select_node("//meta[@http-equiv='refresh']"));
    EXPECT_FALSE(page_.select_node("//div[.='harness did not end']"));
}

TEST_F(CampaignPageTest, ShowsOfHundredsOfCasesTheChecksOfThoseThatDidNotPass) {
    std::vector<CaseRecord> cases(200, Record("a", Outcome::Pass));
    cases[150] = Record("b", Outcome::Fail);
    Make(Finished(cases));
    EXPECT_EQ(page_.select_nodes("//table[@class='matrix']//thead//th[.!='Check']").size(), 1U);
    EXPECT_TRUE(page_.select_node("//table[@class='matrix']//th[.='151']"));
    Make(Finished(std::vector<CaseRecord>(300, Record("b", Outcome::Fail))));
    EXPECT_EQ(page_.select_nodes("//table[@class='matrix']//thead//th[.!='Check']").size(), 100U);
}

TEST_F(CampaignPageTest, LeadsFromFaultAndMessageToTheCase) {
    CampaignRecord campaign = Finished({});
    Case plan{"split=2@GET_FILE-2.0", 2, "-p 2 -c 1", ""};
    plan.fault = fault::Choose(plan.name).at(0);
    result::RunResult run;
    run.checks = {{"fault.acted", "", result::Verdict::Pass, "", "", {}}};
    campaign.coverage.Add(plan, run, {});
    Make(campaign);
    EXPECT_EQ(Target("1"), "#split=2@GET_FILE-2.0");
    EXPECT_TRUE(page_.select_node("//tr[th='split']"));
    EXPECT_TRUE(page_.select_node("//th[.='GET_FILE']"));
}

TEST_F(CampaignPageTest, LeadsFromEachCheckToTheCasesPage) {
    Make(Finished({Record("xfer-2.0", Outcome::Fail)}));
    EXPECT_EQ(Target("F"), "cases/xfer-2.0/report.html#xfer.answer");
    EXPECT_EQ(Target("harness.log"), "cases/xfer-2.0/harness.log");
}

TEST_F(CampaignPageTest, LeadsToTheCaseWhereItHasNoPage) {
    CaseRecord record = Record("xfer-2.0", Outcome::Timeout);
    record.files = {"harness.log"};
    Make(Finished({record}));
    EXPECT_EQ(Target("F"), "#xfer-2.0");
    EXPECT_STREQ(page_.select_node("//tr[@id='xfer-2.0']//span").node().text().get(), "TIMEOUT");
}

TEST_F(CampaignPageTest, ShowsWhatPeopleWroteAsTheyWroteIt) {
    CampaignRecord campaign = Finished({Record("a", Outcome::Fail)});
    campaign.note = "</dd><script>alert(1)</script>";
    campaign.cases[0].reason = "<b>\"&\xff";
    Make(campaign);
    EXPECT_TRUE(page_.select_node("//dd[.='</dd><script>alert(1)</script>']"));
    EXPECT_TRUE(page_.select_node("//td[starts-with(text(), '<b>\"&\xef\xbf\xbd')]"));
}

TEST_F(CampaignPageTest, BlamesNothingOnFaultsAfterAFailedCleanExport) {
    CampaignRecord campaign = Finished({Record("a", Outcome::Fail), Record("b", Outcome::Pass)});
    for (CaseRecord& record : campaign.cases) {
        record.isSuspect = true;
    }
    Make(campaign);
    EXPECT_EQ(page_.select_nodes("//div[starts-with(., 'The clean export before it failed')]").size(), 1U);
}

}  // namespace
}  // namespace rig::campaign
