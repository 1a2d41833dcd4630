#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <nlohmann/json.hpp>

#include "rig/diff/CampaignReader.h"
#include "rig/log/LogReader.h"
#include "tests/support/TemporaryFolder.h"

using namespace rig::diff;
using Json = nlohmann::json;

namespace {

const std::string kExpected = "/campaign.json: expected the record of a campaign (format 1), found ";

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
    Json record_ = Json::parse(std::ifstream(VELLORAN_CAMPAIGNS "/old/campaign.json"));
};

TEST_F(CampaignFolder, TellsWhichPartItIs) {
    WriteRecord();
    EXPECT_EQ(ReadCampaign(Path(), Depth::Record).shard, "");
    record_["shard"] = {{"index", 2}, {"total", 3}};
    WriteRecord();
    EXPECT_EQ(ReadCampaign(Path(), Depth::Record).shard, "2 of 3");
}

TEST_F(CampaignFolder, ThatWasMergedTellsOfWhat) {
    record_["seed"] = nullptr;
    record_["merged"]["parts"] = {{{"begin", 7}, {"seed", 5}, {"note", "a"}},
                                  {{"begin", 8}, {"seed", nullptr}, {"note", ""}}};
    WriteRecord();
    const Campaign campaign = ReadCampaign(Path(), Depth::Record);
    EXPECT_EQ(campaign.seed, 0U);
    ASSERT_EQ(campaign.parts.size(), 2U);
    EXPECT_EQ(campaign.parts[0].begin, 7);
    EXPECT_EQ(campaign.parts[0].seed, 5U);
    EXPECT_EQ(campaign.parts[0].note, "a");
}

TEST_F(CampaignFolder, WhoseRecordIsEmptyIsRefused) {
    folder_.Write("campaign.json", "");
    errno = EPERM;  // of something else
    EXPECT_EQ(Refusal(), kExpected + "nothing");
}

TEST_F(CampaignFolder, CutAtAnyByteIsRefused) {
    record_["cases"] = Json::array({record_["cases"][0]});
    const std::string text = record_.dump();
    for (std::size_t length = 0; length < text.size(); ++length) {
        folder_.Write("campaign.json", text.substr(0, length));
        EXPECT_EQ(Refusal().find(kExpected), 0U) << length;
    }
}

TEST_F(CampaignFolder, OfAnotherFormatIsRefused) {
    record_["format"] = 2;
    WriteRecord();
    EXPECT_EQ(Refusal(), kExpected + "[json.exception.other_error.501] format 2");
}

TEST_F(CampaignFolder, WithAnUnknownVerdictIsRefused) {
    record_["cases"][0]["outcome"] = "SPLENDID";
    WriteRecord();
    EXPECT_EQ(Refusal(), kExpected + "[json.exception.other_error.501] the verdict \"SPLENDID\"");
}

TEST_F(CampaignFolder, WithoutAFieldIsRefused) {
    record_["cases"][0].erase("checks");
    WriteRecord();
    EXPECT_EQ(Refusal(), kExpected + "[json.exception.out_of_range.403] key 'checks' not found");
}

TEST_F(CampaignFolder, WithoutCasesIsRefused) {
    record_["cases"] = Json::array();
    WriteRecord();
    EXPECT_EQ(Refusal(), "/campaign.json: expected at least one case, found none");
}

TEST_F(CampaignFolder, WhoseVerdictIsGoneIsRefused) {
    WriteRecord();
    EXPECT_EQ(Refusal(),
              "/cases/order-2.0/verdict.json: expected a case's verdict, found No such file or directory");
}

}  // namespace
