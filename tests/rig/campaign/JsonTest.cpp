#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "rig/campaign/evidence/CampaignFiles.h"

namespace rig::campaign {
namespace {

using Json = nlohmann::json;

CaseRecord Record() {
    CaseRecord record;
    record.plan = {"xfer-2.0", 2, "-p 2 -x", "A sentence."};
    record.id = "xfer-2.0";
    record.outcome = Outcome::Timeout;
    record.reason = "a \"reason\"\n\xff";
    record.begin = 1'795'226'269'009'838;
    record.harness = {"velloran -p 2 -x", Ending{44, {}}, "SIGINT"};
    record.dvr = ProcessRecord{"dvr", Ending{{}, 15}, "SIGTERM"};
    record.hooks = {{"alive", "true", Ending{0, {}}, 0.5}};
    record.verdict = result::Verdict::Fail;
    record.checks = {{"xfer.answer", "", result::Verdict::Fail, "", "nothing", {}}};
    return record;
}

TEST(CampaignJson, TellsACase) {
    const Json json = Json::parse(CaseJson(Record()));
    EXPECT_EQ(json["format"], 1);
    EXPECT_EQ(json["outcome"], "TIMEOUT");
    EXPECT_EQ(json["verdict"], "FAIL");
    EXPECT_EQ(json["folder"], "cases/xfer-2.0");
    EXPECT_EQ(json["role"], "fault");
    EXPECT_EQ(json["begin"], 1'795'226'269'009'838);
    EXPECT_TRUE(json["end"].is_null());
    EXPECT_EQ(json["harness"]["status"], 44);
    EXPECT_TRUE(json["harness"]["signal"].is_null());
    EXPECT_EQ(json["dvr"]["signal"], 15);
    EXPECT_EQ(json["hooks"][0]["hook"], "alive");
    EXPECT_EQ(json["checks"][0]["verdict"], "FAIL");
}

TEST(CampaignJson, TellsNothingOfWhatDidNotHappen) {
    const Json json = Json::parse(CaseJson(CaseRecord()));
    EXPECT_EQ(json["outcome"], "NOT RUN");
    for (const char* field : {"verdict", "begin", "end", "dvr"}) {
        EXPECT_TRUE(json[field].is_null()) << field;
    }
}

TEST(CampaignJson, TellsTheCampaignWithItsCases) {
    CampaignRecord campaign;
    campaign.cases = {Record()};
    campaign.note = "unit 7";
    campaign.seed = 4'000'000'000;
    campaign.versions = {{"velloran-rig", "1"}};
    Json json = Json::parse(CampaignJson(campaign));
    EXPECT_EQ(json["state"], "running");
    EXPECT_TRUE(json["outcome"].is_null());
    EXPECT_TRUE(json["status"].is_null());
    EXPECT_EQ(json["seed"], 4'000'000'000);
    EXPECT_EQ(json["versions"]["velloran-rig"], "1");
    Json alone = Json::parse(CaseJson(Record()));
    alone.erase("format");
    EXPECT_EQ(json["cases"][0], alone) << "a case is the same there as in its own file";
    campaign.state = "finished";
    json = Json::parse(CampaignJson(campaign));
    EXPECT_EQ(json["outcome"], "TIMEOUT");
    EXPECT_EQ(json["status"], 1);
}

TEST(CampaignJson, TellsTheSpread) {
    CampaignRecord campaign;
    campaign.repeat = 2;
    campaign.cases = {Record(), Record()};
    campaign.cases[1].times.duration = 4;
    const Json spread = Json::parse(CampaignJson(campaign))["spread"][0];
    EXPECT_EQ(spread["case"], "xfer-2.0");
    EXPECT_EQ(spread["outcomes"]["TIMEOUT"], 2);
    EXPECT_EQ(spread["duration"]["most"], 4);
}

}  // namespace
}  // namespace rig::campaign
