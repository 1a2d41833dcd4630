#include <gtest/gtest.h>

#include "rig/html/HtmlMatrix.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

TEST(AddTable, NamesItselfItsColumnsAndRows) {
    HtmlPage page("title");
    pugi::xml_node row = Add(AddTable(page.Body(), "Caption", {"One", "Two"}), "tr");
    AddRowHead(row, "row");
    EXPECT_NE(
        page.Text().find("aria-label=\"Caption\" tabindex=\"0\"><table><caption>Caption</caption><thead><tr>"
                         "<th scope=\"col\">One</th><th scope=\"col\">Two</th></tr></thead>"
                         "<tbody><tr><th scope=\"row\">row</th></tr></tbody></table>"),
        std::string::npos);
}

/// A table with rows of these outcomes, and its filter.
pugi::xml_document TableOf(const std::vector<const char*>& outcomes) {
    HtmlPage page("title");
    pugi::xml_node body = AddTable(page.Body(), "Caption", {"One"});
    for (const char* const outcome : outcomes) {
        SetOutcome(Add(body, "tr"), outcome);
    }
    AddFilter(body, "rows");
    return Read(page.Text());
}

TEST(AddFilter, OffersTheOutcomesThatThereAreAndTellsHowMany) {
    const auto page = TableOf({"TIMEOUT", "PASS", "PASS", "FAIL", "PASS"});
    std::string choices;
    for (const auto& label : page.select_nodes("//fieldset/label")) {
        choices += TextOf(label.node()) + "|" + label.node().child("input").attribute("value").value() + "|";
    }
    EXPECT_EQ(choices, "PASS3|PASS|FAIL1|FAIL|TIMEOUT1|TIMEOUT|");
    const pugi::xml_node form = page.select_node("//form[@hidden]").node();  // until the script runs
    EXPECT_STREQ(form.attribute("name").value(), "rows");
    EXPECT_STREQ(form.next_sibling().attribute("class").value(), "scrolls");
}

TEST(AddFilter, OffersOnlyASearchWhereAllAreAlike) {
    const auto page = TableOf({"PASS", "PASS", "PASS", "PASS", "PASS"});
    EXPECT_TRUE(page.select_node("//form//input[@type='search']"));
    EXPECT_FALSE(page.select_node("//fieldset"));
}

TEST(AddFilter, LeavesASmallTableAlone) {
    EXPECT_FALSE(TableOf({"PASS", "FAIL", "PASS", "PASS"}).select_node("//form"));
}

TEST(AddCheckMatrix, DividesWhatIsTooWide) {
    const std::vector<result::CheckResult> checks = MadeUp().runs[0].checks;
    std::vector<MatrixColumn> columns;
    for (int number = 1; number <= 65; ++number) {
        columns.push_back({std::to_string(number), &checks, "page#"});
    }
    columns[64].target = "#case";
    columns[64].isCheckAppended = false;
    HtmlPage page("title");
    AddCheckMatrix(page.Body(), "Caption", columns);
    const auto read = Read(page.Text());
    EXPECT_EQ(read.select_nodes("//table[@class='matrix']").size(), 3U);
    EXPECT_EQ(read.select_nodes("//thead//th[.='Check']").size(), 3U);
    EXPECT_EQ(read.select_nodes("//a[@href='page#made-up.fail'][.='F']").size(), 64U);
    EXPECT_EQ(read.select_nodes("//table[3]//a[@href='#case']|//a[@href='#case']").size(), checks.size());
    EXPECT_STREQ(read.select_node("//p[@class='hint']").node().child_value(),
                 "P pass, K known failure, F fail, E environment, I inconclusive, N not reached");
}

}  // namespace
}  // namespace rig::html
