#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "rig/diff/Reports.h"
#include "tests/rig/diff/MadeUp.h"

using namespace rig::diff;
using Json = nlohmann::json;

namespace {

class Reports : public testing::Test {
 protected:
    Reports() {
        before_.folder = "old";
        after_.folder = "new";
        after_.note = "firmware 2";
        after_.state = "interrupted";
        after_.cases[0].runs[0].hasPage = true;
        after_.versions = {{"host", "rig"}};
        before_.cases.push_back({"same-2.0", "-p 2", {RunThat("PASS")}});
        after_.cases.push_back(before_.cases.back());
    }

    Campaign before_ = CampaignOf({RunThat("PASS")});
    Campaign after_ = CampaignOf({RunThat("FAIL", "no <source>")});
};

TEST_F(Reports, InTextSayWhatChanged) {
    EXPECT_EQ(DiffText(Compare(before_, after_), false, false),
              "before: old, 1970-01-01T00:00:00Z\n"
              "now:    new, firmware 2, 1970-01-01T00:00:00Z, not finished: interrupted\n"
              "    changed   host\n"
              "              before: not known\n"
              "              now:    rig\n"
              "worse     xfer-2.0  velloran -p 2 -x\n"
              "    worse     outcome\n"
              "              before: PASS\n"
              "              now:    FAIL: no <source>\n"
              "    see new/cases/xfer-2.0\n"
              "1 case worse, 0 better, 0 changed, 1 the same\n");
}

TEST_F(Reports, InTextNameWhatIsTheSameWhereAsked) {
    const std::string text = DiffText(Compare(before_, after_), true, false);
    EXPECT_NE(text.find("\nsame      same-2.0  velloran -p 2\n1 case worse"), std::string::npos) << text;
}

TEST_F(Reports, InTextHaveColoursWhereAsked) {
    const std::string text = DiffText(Compare(before_, after_), false, true);
    EXPECT_NE(text.find("\n\x1b[31mworse   \x1b[0m  xfer-2.0"), std::string::npos) << text;
}

TEST_F(Reports, InTextLetNothingSteerTheTerminal) {
    after_.note = "\x1b[31m";
    EXPECT_NE(DiffText(Compare(before_, after_), false, false).find("new, \\x1b[31m, "), std::string::npos);
}

TEST_F(Reports, InJsonHoldAllCases) {
    const Json json = Json::parse(DiffJson(Compare(before_, after_)));
    EXPECT_EQ(json["before"]["folder"], "old");
    EXPECT_EQ(json["now"]["state"], "interrupted");
    EXPECT_EQ(json["counts"], (Json{{"worse", 1}, {"better", 0}, {"changed", 0}, {"same", 1}}));
    EXPECT_EQ(json["surroundings"][0]["subject"], "host");
    ASSERT_EQ(json["cases"].size(), 2U);
    EXPECT_EQ(json["cases"][0]["change"], "worse");
    EXPECT_EQ(
        json["cases"][0]["differences"][0],
        (Json{
            {"change", "worse"}, {"subject", "outcome"}, {"before", "PASS"}, {"now", "FAIL: no <source>"}}));
    EXPECT_EQ(json["cases"][1]["differences"], Json::array());
}

TEST_F(Reports, AsAPageLeadToTheEvidenceOfBoth) {
    const std::string page = DiffPage(Compare(before_, after_), std::filesystem::current_path());
    EXPECT_NE(page.find("Two campaigns: 1 case worse"), std::string::npos);
    EXPECT_NE(page.find("href=\"old/cases/xfer-2.0/\""), std::string::npos) << page;
    EXPECT_NE(page.find("href=\"new/cases/xfer-2.0/report.html\""), std::string::npos) << page;
    EXPECT_NE(page.find("FAIL: no &lt;source"), std::string::npos) << page;
}

TEST_F(Reports, AsAPageInAnotherFolderStillLeadThere) {
    const std::string page = DiffPage(Compare(before_, after_), std::filesystem::current_path() / "new");
    EXPECT_NE(page.find("href=\"cases/xfer-2.0/report.html\""), std::string::npos) << page;
    EXPECT_NE(page.find("href=\"../old/cases/xfer-2.0/\""), std::string::npos) << page;
}

}  // namespace
