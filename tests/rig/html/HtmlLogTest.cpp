#include <gtest/gtest.h>

#include "rig/html/HtmlSections.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

pugi::xml_document Log(const result::RunResult& run, std::size_t limit = kNoLimit) {
    pugi::xml_document page;
    AddLog(page.append_child("section"), run, LogPlaces(run, "", limit), "");
    return page;
}

result::RunResult RunOfLines(std::size_t lines) {
    result::RunResult run;
    for (std::size_t line = 1; line <= lines; ++line) {
        run.log.push_back({line, std::nullopt, 1, "line " + std::to_string(line)});
    }
    return run;
}

TEST(HtmlLog, ShowsNumberTimeLevelAndText) {
    EXPECT_EQ(TextOf(ById(Log(MadeUp().runs[0]), "L2")), "20.25032processing 'invalidEvent' option [event]");
    EXPECT_EQ(TextOf(ById(Log(MadeUp().runs[0]), "L4")), "4shutting down");
}

TEST(HtmlLog, MarksTheLinesThatProveSomethingInWordsToo) {
    const auto page = Log(MadeUp().runs[0]);
    EXPECT_STREQ(ById(page, "L3").attribute("class").value(), "evidence");
    const pugi::xml_node proof = ById(page, "L3").select_node(".//a[2]|.//div/a").node();
    EXPECT_EQ(TextOf(proof), "evidence: FAIL made-up.fail");
    EXPECT_STREQ(proof.attribute("href").value(), "#made-up.fail");
    EXPECT_FALSE(ById(page, "L2").attribute("class"));
}

TEST(HtmlLog, OffersTheLevelsThatItHolds) {
    const auto page = Log(MadeUp().runs[0]);
    std::string levels;
    for (const auto& box : page.select_nodes("//input[@name='level']/@value")) {
        levels += std::string(box.attribute().value()) + " ";
    }
    EXPECT_EQ(levels, "1 16 32 none ");
    EXPECT_TRUE(page.select_node("//form[@hidden]"));  // until the script runs
}

TEST(HtmlLog, ComesInBlocks) {
    const auto page = Log(RunOfLines(450));
    EXPECT_EQ(page.select_nodes("//ol").size(), 3U);
    EXPECT_EQ(page.select_nodes("//li").size(), 450U);
    EXPECT_STREQ(page.select_node("//ol[3]").node().attribute("style").value(),
                 "contain-intrinsic-size:auto 75em");
}

TEST(HtmlLog, SaysWhatItLeavesOutButNothingThatProvesSomething) {
    result::RunResult run = RunOfLines(1000);
    run.checks.push_back({"made-up.check", "", result::Verdict::Fail, "", "", {{"a.log", 500, "line 500"}}});
    const auto page = Log(run, 100);
    EXPECT_EQ(page.select_nodes("//li").size(), 101U);
    EXPECT_TRUE(ById(page, "L500"));
    std::string words;
    for (const auto& cut : page.select_nodes("//p[@class='cut']")) {
        words += TextOf(cut.node()) + "|";
    }
    EXPECT_EQ(
        words,
        "This page holds 101 of the 1000 lines of this run: the first, the last, and those in between that "
        "prove a "
        "finding. The other 899 are in the log itself.|449 lines left out here|450 lines left out here|");
}

TEST(HtmlLog, LinksNoStepToALineThatIsLeftOut) {
    const result::RunResult run = RunOfLines(1000);
    const LogPlaces places(run, "", 100);
    EXPECT_EQ(places.TargetOf(result::Step{result::Step::Kind::Note, std::nullopt, "", 50}), "#L50");
    EXPECT_EQ(places.TargetOf(result::Step{result::Step::Kind::Note, std::nullopt, "", 51}), std::nullopt);
}

TEST(HtmlLog, TellsTheLinesOfSeveralFilesApart) {
    result::RunResult run = RunOfLines(10);
    run.log.push_back({1, std::nullopt, 1, "first line of the next file"});
    run.log.push_back({2, std::nullopt, 1, "line"});
    const LogPlaces places(run, "run2-", kNoLimit);
    EXPECT_EQ(places.AnchorOf(0), "run2-L1");
    EXPECT_EQ(places.AnchorOf(10), "run2-L2.1");
    EXPECT_EQ(places.TargetOf(result::Evidence{"b.log", 1, "first line"}), "#run2-L2.1");
    EXPECT_EQ(places.TargetOf(result::Evidence{"a.log", 1, "line 1"}), "#run2-L1");
    EXPECT_EQ(places.TargetOf(result::Evidence{"a.log", 1, "another line"}), std::nullopt);
}

}  // namespace
}  // namespace rig::html
