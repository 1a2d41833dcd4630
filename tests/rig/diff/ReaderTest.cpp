#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "rig/diff/CampaignReader.h"
#include "rig/log/LogReader.h"
#include "tests/support/TemporaryFolder.h"

using namespace rig::diff;
using Json = nlohmann::json;

namespace {

class CampaignFolder : public testing::Test {
 protected:
    void WriteRecord() const { folder_.Write("campaign.json", record_.dump()); }

    /// Reads the folder, which must be refused. @return the reason, without the folder
    std::string Refusal() const {
        try {
            ReadCampaign(Path());
        } catch (const rig::log::Unreadable& refusal) {
            return std::string(refusal.what()).substr(Path().size());
        }
        return "nothing was refused";
    }

    std::string Path() const { return folder_.Path().string(); }

    TemporaryFolder folder_;
    Json record_ = {
        {"format", 1},
        {"state", "interrupted"},
        {"note", "firmware 1"},
        {"begin", 1795232047286127},
        {"versions", {{"host", "rig"}}},
        {"cases",
         {{{"name", "clean-2.0"},
           {"switches", "-p 2"},
           {"outcome", "FAIL"},
           {"reason", "why"},
           {"folder", "cases/clean-2.0"},
           {"files", {"verdict.json", "report.html"}},
           {"checks", {{{"id", "log.start"}, {"verdict", "PASS"}, {"found", "it"}}}},
           {"timings", {{{"request", "GET_FILE"}, {"median", 1.5}, {"percentile95", 2.5}, {"count", 3}}}}}}}};
    Json verdict_ = {{"runs",
                      {{{"steps",
                         {{{"kind", "note"}, {"text", "Connected to: fam=2"}},
                          {{"kind", "dvr"}, {"text", "OK"}},
                          {{"kind", "fault"}, {"text", "processing"}},
                          {{"kind", "harness"}, {"text", "GET_FILE E1/front.ts"}}}}}}}};
};

TEST_F(CampaignFolder, IsReadWithTheDialogueOfEachCase) {
    WriteRecord();
    folder_.Write("cases/clean-2.0/verdict.json", verdict_.dump());
    const Campaign campaign = ReadCampaign(Path());
    EXPECT_EQ(campaign.state, "interrupted");
    EXPECT_EQ(campaign.note, "firmware 1");
    EXPECT_EQ(campaign.versions.at("host"), "rig");
    ASSERT_EQ(campaign.cases.size(), 1U);
    EXPECT_EQ(campaign.cases[0].name, "clean-2.0");
    ASSERT_EQ(campaign.cases[0].runs.size(), 1U);
    const CaseRun& run = campaign.cases[0].runs[0];
    EXPECT_EQ(run.outcome, "FAIL");
    EXPECT_EQ(run.reason, "why");
    EXPECT_TRUE(run.hasPage);
    EXPECT_EQ(run.checks.at(0).second.found, "it");
    EXPECT_EQ(run.reactions.at("GET_FILE").median, 1.5);
    EXPECT_EQ(run.messages, (std::vector<std::string>{"DVR OK", "harness GET_FILE"}));
}

TEST_F(CampaignFolder, HasTheRunsOfACaseTogether) {
    record_["cases"][0]["files"] = Json::array();
    record_["cases"].push_back(record_["cases"][0]);
    WriteRecord();
    const Campaign campaign = ReadCampaign(Path());
    ASSERT_EQ(campaign.cases.size(), 1U);
    EXPECT_EQ(campaign.cases[0].runs.size(), 2U);
}

TEST_F(CampaignFolder, WithoutRecordIsRefused) {
    EXPECT_EQ(
        Refusal(),
        "/campaign.json: expected the record of a campaign (format 1), found No such file or directory");
}

TEST_F(CampaignFolder, WhoseRecordIsEmptyIsRefused) {
    folder_.Write("campaign.json", "");
    EXPECT_EQ(Refusal(), "/campaign.json: expected the record of a campaign (format 1), found nothing");
}

TEST_F(CampaignFolder, CutAtAnyByteIsRefused) {
    const std::string text = record_.dump();
    for (std::size_t length = 0; length < text.size(); ++length) {
        folder_.Write("campaign.json", text.substr(0, length));
        EXPECT_EQ(Refusal().find("/campaign.json: expected the record of a campaign (format 1), found "), 0U)
            << length;
    }
}

TEST_F(CampaignFolder, OfAnotherFormatIsRefused) {
    record_["format"] = 2;
    WriteRecord();
    EXPECT_NE(Refusal().find("format 2"), std::string::npos) << Refusal();
}

TEST_F(CampaignFolder, WithAnUnknownVerdictIsRefused) {
    record_["cases"][0]["outcome"] = "SPLENDID";
    WriteRecord();
    EXPECT_NE(Refusal().find("the verdict \"SPLENDID\""), std::string::npos) << Refusal();
}

TEST_F(CampaignFolder, WithoutAFieldIsRefused) {
    record_["cases"][0].erase("checks");
    WriteRecord();
    EXPECT_NE(Refusal().find("'checks' not found"), std::string::npos) << Refusal();
}

TEST_F(CampaignFolder, WithoutCasesIsRefused) {
    record_["cases"] = Json::array();
    WriteRecord();
    EXPECT_EQ(Refusal(), "/campaign.json: expected at least one case, found none");
}

TEST_F(CampaignFolder, WhoseVerdictIsGoneIsRefused) {
    WriteRecord();
    EXPECT_EQ(Refusal(),
              "/cases/clean-2.0/verdict.json: expected a case's verdict, found No such file or directory");
}

TEST_F(CampaignFolder, ThatIsAFileIsRefused) {
    folder_.Write("file", "text");
    EXPECT_THROW(ReadCampaign(Path() + "/file"), rig::log::Unreadable);
}

}  // namespace
