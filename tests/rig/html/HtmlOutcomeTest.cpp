#include <gtest/gtest.h>

#include <set>

#include "rig/campaign/Outcome.h"
#include "rig/diff/Compare.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/PageFiles.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

/// All names that reports print.
std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (auto verdict = result::Verdict::Pass; verdict <= result::Verdict::Fail;
         verdict = static_cast<result::Verdict>(static_cast<int>(verdict) + 1)) {
        names.emplace_back(result::NameOf(verdict));
    }
    for (auto outcome = campaign::Outcome::Pass; outcome <= campaign::Outcome::Interrupted;
         outcome = static_cast<campaign::Outcome>(static_cast<int>(outcome) + 1)) {
        names.emplace_back(campaign::NameOf(outcome));
    }
    for (auto change = diff::Change::Same; change <= diff::Change::Worse;
         change = static_cast<diff::Change>(static_cast<int>(change) + 1)) {
        names.emplace_back(diff::NameOf(change));
    }
    return names;
}

TEST(Looks, HaveEveryNameThatReportsPrintAndAStyleForIt) {
    for (const std::string& name : Names()) {
        EXPECT_EQ(LookOf(name).name, name);
        EXPECT_NE(std::string(kPageStyle).find(std::string(".") + LookOf(name).cssClass + " {"),
                  std::string::npos)
            << name;
    }
}

TEST(Looks, OfWhatNoReportPrintsAreNotAPass) {
    EXPECT_EQ(LookOf("BETTER THAN EVER").name, "INCONCLUSIVE");
}

TEST(Looks, HaveLettersThatDiffer) {
    std::set<std::string_view> letters;
    for (const Look& look : Looks()) {
        EXPECT_TRUE(look.letter.empty() || letters.insert(look.letter).second) << look.name;
    }
}

TEST(AddVerdict, SaysItInWordsAndColour) {
    HtmlPage page("title");
    AddVerdict(page.Body(), result::Verdict::NotReached);
    EXPECT_NE(page.Text().find("<span class=\"verdict not-reached\">NOT REACHED</span>"), std::string::npos);
}

TEST(AddTally, CountsInWordsAndInShares) {
    HtmlPage page("title");
    AddTally(page.Body(), {{"FAIL", 0}, {"TIMEOUT", 1}, {"PASS", 26}});
    const auto read = Read(page.Text());
    std::string words;
    for (const auto& item : read.select_nodes("//li")) {
        words += std::string(item.node().attribute("class").value()) + ": " + TextOf(item.node()) + "|";
    }
    EXPECT_EQ(words, "pass: 26 passed|none: 0 failed|fail: 1 timed out|");
    const pugi::xml_node bar = read.select_node("//div[@class='bar']").node();
    EXPECT_STREQ(bar.attribute("aria-label").value(), "26 passed, 0 failed, 1 timed out");
    EXPECT_STREQ(bar.first_child().attribute("style").value(), "flex-grow:26");
    EXPECT_EQ(bar.select_nodes("span").size(), 2U);
}

}  // namespace
}  // namespace rig::html
