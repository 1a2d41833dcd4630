#include <gtest/gtest.h>

#include "rig/html/HtmlReport.h"
#include "rig/html/HtmlSections.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

std::string RowsOf(const pugi::xml_document& page, const char* cssClass, const char* cells) {
    std::string text;
    for (const auto& cell :
         page.select_nodes((std::string("//table[@class='") + cssClass + "']" + cells).c_str())) {
        text += TextOf(cell.node()) + "|";
    }
    return text;
}

TEST(HtmlChecks, ShowTheWorstFirst) {
    const auto page = Read(HtmlReport(MadeUp()));
    EXPECT_EQ(RowsOf(page, "checks", "/tbody/tr/td[1]"),
              "FAIL|ENVIRONMENT|INCONCLUSIVE|NOT REACHED|KNOWN FAILURE|PASS|");
}

TEST(HtmlChecks, SayWhatWasRequiredExpectedAndFound) {
    const auto page = Read(HtmlReport(MadeUp()));
    EXPECT_EQ(
        TextOf(ById(page, "made-up.pass")),
        "PASSmade-up.passWhat is required.what was expected of made-up.passwhat was found of made-up.pass");
}

TEST(HtmlChecks, LeadToTheLinesThatProveThem) {
    const auto page = Read(HtmlReport(MadeUp()));
    const pugi::xml_node list = ById(page, "made-up.fail").select_node(".//ul").node();
    EXPECT_STREQ(list.first_child().child("a").attribute("href").value(), "#L3");
    EXPECT_EQ(TextOf(list.first_child()), "made-up.log:3 Sending DONE");
    // A line that the run's log does not hold is shown without a link.
    EXPECT_FALSE(list.last_child().child("a"));
    EXPECT_EQ(TextOf(list.last_child()), "made-up.log:99 not of this run");
}

TEST(HtmlTimings, AreInMilliseconds) {
    EXPECT_EQ(RowsOf(Read(HtmlReport(MadeUp())), "numbers", "/tbody/tr/*"), "GET_FILE|3|1.0|2.5|2.5|2.5|");
}

TEST(HtmlMatrix, TellsEachCheckOfEachRunInALetterAndAWord) {
    const auto page =
        Read(HtmlReport({{MadeUp().runs[0], With(result::Verdict::Pass).runs[0], MadeUp().runs[0]}}));
    EXPECT_EQ(RowsOf(page, "matrix", "/thead/tr/th"), "Check|1|2|3|");
    EXPECT_EQ(RowsOf(page, "matrix", "/tbody/tr[th='made-up.fail']/td"), "F||F|");
    EXPECT_EQ(RowsOf(page, "matrix", "/tbody/tr[th='made-up.check']/td"), "|P||");
    const pugi::xml_node cell = page.select_node("//a[@href='#run3-made-up.inconclusive']").node();
    EXPECT_STREQ(cell.attribute("aria-label").value(), "INCONCLUSIVE");
}

TEST(HtmlMatrix, IsThereOnlyForManyRuns) {
    EXPECT_FALSE(Read(HtmlReport(MadeUp())).select_node("//table[@class='matrix']"));
}

}  // namespace
}  // namespace rig::html
