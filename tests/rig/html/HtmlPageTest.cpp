#include <gtest/gtest.h>

#include "rig/html/HtmlPage.h"
#include "rig/html/PageFiles.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

bool Holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(HtmlPage, HasWhatBrowsersAndScreenReadersNeed) {
    const std::string page = HtmlPage("A & B").Text();
    EXPECT_EQ(page.rfind("<!DOCTYPE html><html lang=\"en\"><head><meta charset=\"utf-8\"/>", 0), 0U);
    EXPECT_TRUE(Holds(page, "<title>A &amp; B</title>"));
    EXPECT_TRUE(Holds(page, "<main><h1>A &amp; B</h1></main>"));
}

TEST(HtmlPage, ClosesElementsAsBrowsersExpect) {
    HtmlPage page("title");
    Add(page.Body(), "td");
    Add(page.Body(), "input");
    Add(Add(page.Body(), "ol"), "li");
    EXPECT_TRUE(Holds(page.Text(), "<td></td><input/><ol><li></li></ol>"));
}

TEST(HtmlPage, HoldsStyleAndScriptAsTheyAre) {
    const std::string page = HtmlPage("title").Text();
    EXPECT_TRUE(Holds(page, std::string("<style>/*<![CDATA[*/\n") + kReportStyle + "/*]]>*/</style>"));
    EXPECT_TRUE(Holds(page, std::string("<script>//<![CDATA[\n") + kReportScript + "//]]></script>"));
}

TEST(HtmlPage, StyleAndScriptHoldNothingThatEndsThem) {
    for (const std::string file : {kReportStyle, kReportScript}) {
        EXPECT_GT(file.size(), 1000U);
        EXPECT_EQ(file.back(), '\n');
        for (const char* const end : {"</", "]]>", "<!--", "<script"}) {
            EXPECT_FALSE(Holds(file, end)) << end;
        }
    }
}

TEST(HtmlPage, LoadsNothing) {
    const std::string page = HtmlPage("title").Text();
    EXPECT_TRUE(Holds(page, "content=\"default-src 'none'; "));
    for (const char* const loads : {"src=", "url(", "@import", "http:", "https:", "<link", "fetch("}) {
        EXPECT_FALSE(Holds(page, loads)) << loads;
    }
}

TEST(HtmlPage, MaySayItsTextTwice) {
    HtmlPage page("title");
    Add(page.Body(), "p");
    const std::string once = page.Text();
    EXPECT_EQ(page.Text(), once);
}

TEST(AddTable, NamesItselfItsColumnsAndRows) {
    HtmlPage page("title");
    pugi::xml_node row = Add(AddTable(page.Body(), "Caption", {"One", "Two"}), "tr");
    AddRowHead(row, "row");
    EXPECT_TRUE(Holds(page.Text(),
                      "aria-label=\"Caption\" tabindex=\"0\"><table><caption>Caption</caption><thead><tr>"
                      "<th scope=\"col\">One</th><th scope=\"col\">Two</th></tr></thead>"
                      "<tbody><tr><th scope=\"row\">row</th></tr></tbody></table>"));
}

TEST(AddVerdict, SaysItInWordsAndColour) {
    HtmlPage page("title");
    AddVerdict(page.Body(), result::Verdict::NotReached);
    EXPECT_TRUE(Holds(page.Text(), "<span class=\"verdict not-reached\">NOT REACHED</span>"));
}

TEST(AddVerdict, HasAStyleForEachVerdict) {
    for (const result::Verdict verdict :
         {result::Verdict::Pass, result::Verdict::KnownFailure, result::Verdict::NotReached,
          result::Verdict::Inconclusive, result::Verdict::Environment, result::Verdict::Fail}) {
        EXPECT_TRUE(Holds(kReportStyle, ".verdict." + ClassOf(verdict))) << ClassOf(verdict);
    }
}

}  // namespace
}  // namespace rig::html
