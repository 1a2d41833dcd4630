#include <gtest/gtest.h>

#include "rig/html/HtmlSections.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

pugi::xml_document Ladder(const result::RunResult& run, std::size_t limit = kNoLimit) {
    pugi::xml_document page;
    const LogPlaces places(run, "", kNoLimit);
    AddLadder(page.append_child("section"), run, places, limit);
    return page;
}

result::RunResult RunOfSteps(std::size_t steps) {
    result::RunResult run;
    for (std::size_t step = 1; step <= steps; ++step) {
        run.steps.push_back(
            {result::Step::Kind::FromDvr, std::nullopt, "MESSAGE " + std::to_string(step), step});
    }
    return run;
}

pugi::xml_node StepOf(const pugi::xml_document& page, const char* kind) {
    return page.select_node((std::string("//g[@class='step ") + kind + "']").c_str()).node();
}

TEST(HtmlLadder, DrawsEachMessageAsAnArrowToItsReceiver) {
    const auto page = Ladder(MadeUp().runs[0]);
    const pugi::xml_node names = page.select_node("//svg").node();
    EXPECT_EQ(TextOf(names).rfind("DVRharness", 0), 0U);
    const std::string dvr = names.select_node("text[.='DVR']/@x").attribute().value();
    const std::string harness = names.select_node("text[.='harness']/@x").attribute().value();
    EXPECT_EQ(StepOf(page, "from-dvr").child("svg").attribute("x").value(), harness);
    EXPECT_EQ(StepOf(page, "from-harness").child("svg").attribute("x").value(), dvr);
    EXPECT_STREQ(StepOf(page, "from-dvr").attribute("aria-label").value(), "0.001 s, DVR to harness: OK");
    EXPECT_EQ(TextOf(StepOf(page, "from-harness")), "2.500DONE");
}

TEST(HtmlLadder, MarksAFaultInWordsToo) {
    const auto page = Ladder(MadeUp().runs[0]);
    EXPECT_TRUE(StepOf(page, "fault").child("rect"));
    EXPECT_FALSE(StepOf(page, "fault").child("line"));
    EXPECT_NE(TextOf(StepOf(page, "fault")).find("Fault injected: "), std::string::npos);
}

TEST(HtmlLadder, LeadsToTheLog) {
    const auto page = Ladder(MadeUp().runs[0]);
    EXPECT_STREQ(StepOf(page, "from-harness").child("a").attribute("href").value(), "#L3");
}

TEST(HtmlLadder, ShowsNotesWithoutTime) {
    EXPECT_EQ(TextOf(StepOf(Ladder(MadeUp().runs[0]), "note")), "shutting down");
}

TEST(HtmlLadder, WrapsALongTextAndLosesNothingOfIt) {
    result::RunResult run = RunOfSteps(1);
    const std::string word = "\xc3\xa4\xc3\xb6\xc3\xbc\xe2\x82\xac";
    for (int count = 0; count < 40; ++count) {
        run.steps[0].text += word;
    }
    const auto page = Ladder(run);
    std::string text;
    for (const auto& line : page.select_nodes("//g/text[not(@class)]/tspan")) {
        const std::string part = TextOf(line.node());
        EXPECT_LE(part.size(), 36U);
        EXPECT_EQ(part.find("\xef\xbf\xbd"), std::string::npos);
        text += (text == "MESSAGE" ? " " : "") + part;
    }
    EXPECT_EQ(text, run.steps[0].text);
}

TEST(HtmlLadder, ComesInPiecesWithTheirOwnNames) {
    const auto page = Ladder(RunOfSteps(60));
    EXPECT_EQ(page.select_nodes("//div/svg").size(), 3U);
    EXPECT_EQ(page.select_nodes("//div/svg/text[.='harness']").size(), 3U);
    EXPECT_EQ(page.select_nodes("//g").size(), 60U);
    EXPECT_FALSE(page.select_node("//p[@class='cut']"));
}

std::string CutsOf(const pugi::xml_document& page) {
    std::string words;
    for (const auto& cut : page.select_nodes("//p[@class='cut']")) {
        words += TextOf(cut.node()) + "|";
    }
    return words;
}

TEST(HtmlLadder, SaysWhatItLeavesOut) {
    result::RunResult run = RunOfSteps(60);
    run.steps[29].kind = result::Step::Kind::Fault;
    const auto page = Ladder(run, 20);
    EXPECT_EQ(page.select_nodes("//g").size(), 21U);
    EXPECT_TRUE(StepOf(page, "fault"));
    EXPECT_EQ(
        CutsOf(page),
        "This page shows 21 of the 60 steps of this run: the first, the last, and up to 20 injected faults "
        "in between. The other 39 are in the log itself.|19 steps left out here|20 steps left out here|");
}

TEST(HtmlLadder, IsBoundedHoweverManyFaultsThereAre) {
    result::RunResult run = RunOfSteps(1000);
    for (result::Step& step : run.steps) {
        step.kind = result::Step::Kind::Fault;
    }
    const auto page = Ladder(run, 20);
    EXPECT_EQ(page.select_nodes("//g").size(), 40U);
    EXPECT_NE(CutsOf(page).find("|960 steps left out here|"), std::string::npos);
}

}  // namespace
}  // namespace rig::html
