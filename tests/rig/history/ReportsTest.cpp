#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <regex>
#include <string>

#include "rig/history/Reports.h"
#include "tests/rig/history/MadeUpFolders.h"
#include "tests/support/ReadFile.h"

using namespace rig::history;

namespace {

/// Five campaigns: of three firmwares, a part, and one that was interrupted.
class HistoryReports : public testing::Test {
 protected:
    HistoryReports() {
        folders_.Write("a", 1, "firmware 1.8",
                       {MadeUpCase("clean-2.0", "PASS"), MadeUpCase("event-2.0", "PASS")});
        folders_.Write(
            "b", 2, "firmware 1.9",
            {MadeUpCase("clean-2.0", "PASS"), MadeUpCase("event-2.0", "FAIL", "no <source> & more")});
        folders_.Write("c#1", 3, "firmware 1.9",
                       {MadeUpCase("clean-2.0", "FAIL", "late"), MadeUpCase("clean-2.0", "PASS")});
        folders_.Write("d", 4, "firmware 1.9",
                       {MadeUpCase("event-2.0", "KNOWN FAILURE", "no <source> & more")},
                       {{"shard", {{"index", 2}, {"total", 3}}}, {"versions", {{"host", "rig-2"}}}});
        folders_.Write("e", 5, "firmware 1.10",
                       {MadeUpCase("clean-2.0", "PASS", "", 200), MadeUpCase("event-2.0", "NOT RUN")},
                       {{"state", "interrupted"}});
    }

    History Read(Order order = Order::Time) {
        std::vector<CampaignDigest> digests;
        for (const char* const folder : {"e", "d", "c#1", "b", "a"}) {
            digests.push_back(DigestOf(rig::diff::ReadCampaign(folder, rig::diff::Depth::Record), texts_));
        }
        return HistoryOf(std::move(digests), order, {{"nowhere", "its record cannot be read"}});
    }

    MadeUpFolders folders_;
    Texts texts_;
};

/// @return what the page shows, a row, fact or figure a line
std::string HistoryPageInLines(const std::string& page) {
    const std::size_t start = page.find("<main");
    const std::string shown = page.substr(start, page.find("</main>") - start);
    return std::regex_replace(shown, std::regex("<(tr|dt|td><a|figure|h2|path|figcaption)\\b"), "\n$&") +
           "\n";
}

/// @return the JSON with each item of its lists in a line
std::string HistoryJsonInLines(const std::string& text) {
    const auto json = nlohmann::ordered_json::parse(text);
    std::string lines;
    for (const auto& [name, value] : json.items()) {
        lines += name + ": " + (value.is_array() ? "" : value.dump()) + "\n";
        for (const auto& one : value.is_array() ? value : nlohmann::ordered_json::array()) {
            lines += "  " + one.dump() + "\n";
        }
    }
    return lines;
}

/// With APPROVE=1 in the environment, what they are now becomes what is approved.
TEST_F(HistoryReports, AreAsApproved) {
    const History history = Read();
    const std::string coloured =
        std::regex_replace(HistoryText(history, 80, true), std::regex("\x1b"), "ESC");
    const std::string all = "== text\n" + HistoryText(history, 80, false) + "\n== coloured\n" + coloured +
                            "\n== JSON\n" + HistoryJsonInLines(HistoryJson(history)) + "\n== page\n" +
                            HistoryPageInLines(HistoryPage(history, folders_.Path()));
    if (std::getenv("APPROVE")) {
        std::ofstream(VELLORAN_APPROVED) << all;
    }
    EXPECT_EQ(ReadFile(VELLORAN_APPROVED), all);
}

TEST_F(HistoryReports, PutFirmwaresInOrderOfTheirNumbers) {
    std::string notes;
    for (const Build& build : Read(Order::Note).builds) {
        notes += build.facts.note + " ";
    }
    EXPECT_EQ(notes, "firmware 1.8 firmware 1.9 firmware 1.9 firmware 1.9 firmware 1.10 ");
}

TEST_F(HistoryReports, ShowOnTheTerminalAsManyOfTheLastAsFit) {
    const std::string narrow = HistoryText(Read(), 14, false);
    EXPECT_NE(narrow.find("\nCases in campaigns 4 to 5\n"), std::string::npos) << narrow;
    EXPECT_NE(narrow.find("\nclean-2.0   P\nevent-2.0  K-\n"), std::string::npos) << narrow;
}

TEST_F(HistoryReports, ArePagesThatXmlReadersReadToo) {
    pugi::xml_document page;
    const std::string text = HistoryPage(Read(), folders_.Path());
    EXPECT_TRUE(page.load_string(text.c_str(), pugi::parse_full));
    EXPECT_EQ(page.select_nodes("//svg").size(), 2U);
}

/// @return a history of so many cases, in which only the last failed
History OfManyCases(std::size_t count, Texts& texts) {
    rig::diff::Campaign campaign;
    campaign.state = "finished";
    for (std::size_t number = 0; number < count; ++number) {
        rig::diff::CaseRun run;
        run.outcome = number + 1 == count ? "FAIL" : "PASS";
        run.reactions["GET_FILE"] = {1, 2};
        campaign.cases.push_back({"case-" + std::to_string(number), "", {run}});
    }
    std::vector<CampaignDigest> digests;
    digests.push_back(DigestOf(std::move(campaign), texts));
    return HistoryOf(std::move(digests), Order::Time);
}

TEST_F(HistoryReports, OfManyCasesLeaveOutThoseThatAlwaysPassed) {
    const History hundred = OfManyCases(100, texts_);
    EXPECT_EQ(hundred.CasesToShow().size(), 100U);
    const History more = OfManyCases(101, texts_);
    ASSERT_EQ(more.CasesToShow().size(), 1U);
    EXPECT_EQ(*more.CasesToShow()[0]->name, "case-100");
    EXPECT_NE(HistoryText(more, 80, false).find("\nThe other 100 always passed.\n"), std::string::npos);
    EXPECT_NE(HistoryPage(more, "/").find("Left out here: 100 cases that always passed."), std::string::npos);
}

TEST_F(HistoryReports, OfManyPlotsShowOnlyThoseWithAMark) {
    EXPECT_NE(HistoryPage(OfManyCases(500, texts_), "/").find("<svg"), std::string::npos);
    const std::string page = HistoryPage(OfManyCases(501, texts_), "/");
    EXPECT_EQ(page.find("<svg"), std::string::npos);
    EXPECT_NE(page.find("Of 501 plots only those with a triangle are shown."), std::string::npos);
}

}  // namespace
