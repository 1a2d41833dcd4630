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
    EXPECT_TRUE(Holds(page, std::string("<style>/*<![CDATA[*/\n") + kPageStyle + "/*]]>*/</style>"));
    EXPECT_TRUE(Holds(page, std::string("<script>//<![CDATA[\n") + kPageScript + "//]]></script>"));
}

TEST(HtmlPage, StyleAndScriptHoldNothingThatEndsThem) {
    for (const std::string file : {kPageStyle, kPageScript}) {
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

TEST(HtmlPage, ShowsTheOutcomeAsABandAroundTheHeading) {
    HtmlPage page("title");
    page.SetOutcome("TIMEOUT");
    Add(page.Body(), "p");
    EXPECT_TRUE(
        Holds(page.Text(),
              "<main><header class=\"band fail\"><p class=\"outcome\">TIMEOUT</p><h1>title</h1></header>"
              "<p></p></main>"));
}

TEST(HtmlPage, RenewsItselfOnlyIfAsked) {
    HtmlPage page("title");
    EXPECT_FALSE(Holds(page.Text(), "refresh\""));
    page.Renew("1 of 2 cases done.");
    EXPECT_TRUE(Holds(page.Text(), "<meta http-equiv=\"refresh\" content=\"5\"/>"));
    EXPECT_TRUE(Holds(page.Text(), ">1 of 2 cases done. This page renews itself every 5 s.</p>"));
}

}  // namespace
}  // namespace rig::html
