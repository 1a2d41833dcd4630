#include <gtest/gtest.h>

#include <map>
#include <set>

#include "rig/html/HtmlReport.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

/// @return how often each anchor is defined on the page, and what is linked but not defined
std::pair<std::map<std::string, int>, std::set<std::string>> Anchors(const pugi::xml_document& page) {
    std::map<std::string, int> ids;
    std::set<std::string> missing;
    for (const auto& id : page.select_nodes("//@id")) {
        ++ids[id.attribute().value()];
    }
    for (const auto& link : page.select_nodes("//@href")) {
        const std::string target = link.attribute().value();
        if (target.at(0) != '#' || ids.count(target.substr(1)) == 0) {
            missing.insert(target);
        }
    }
    return {ids, missing};
}

void ExpectSoundAnchors(const result::Result& result) {
    const auto [ids, missing] = Anchors(Read(HtmlReport(result)));
    EXPECT_TRUE(missing.empty()) << *missing.begin();
    for (const auto& [id, count] : ids) {
        EXPECT_EQ(count, 1) << id;
    }
}

std::string HeadlineOf(const result::Result& result) {
    return Read(HtmlReport(result)).select_node("//h1").node().child_value();
}

TEST(HtmlReport, SaysTheVerdictInWords) {
    EXPECT_EQ(HeadlineOf(With(result::Verdict::Pass)), "The DVR passed: 1 of 1 check");
    EXPECT_EQ(HeadlineOf(With(result::Verdict::Warning)), "The DVR passed, with warnings: 1 of 1 check");
    EXPECT_EQ(HeadlineOf(With(result::Verdict::KnownFailure)),
              "The DVR failed only in known ways: 1 of 1 check");
    EXPECT_EQ(HeadlineOf(With(result::Verdict::NotReached)),
              "The export did not get far enough: 1 of 1 check not reached");
    EXPECT_EQ(HeadlineOf(With(result::Verdict::Inconclusive)),
              "The log cannot tell whether the DVR behaved: 1 of 1 check inconclusive");
    EXPECT_EQ(HeadlineOf(With(result::Verdict::Environment)),
              "The harness or the rig failed, not the DVR: 1 of 1 check");
    EXPECT_EQ(HeadlineOf(MadeUp()), "The DVR failed: 1 of 6 checks");
}

TEST(HtmlReport, NamesTheRun) {
    const std::string facts = TextOf(Read(HtmlReport(MadeUp())).select_node("//dl").node());
    EXPECT_EQ(facts,
              "Runmade-up.log:1Switchesvelloran -p 2 -eBegin2026-11-20T22:03:07ZEnd2026-11-20T22:03:09Z"
              "Duration2.500 s");
}

TEST(HtmlReport, SaysWhereTheLogHoldsNoTime) {
    const std::string facts =
        TextOf(Read(HtmlReport(With(result::Verdict::Pass))).select_node("//dl").node());
    EXPECT_NE(facts.find("Beginnot in the logEndnot in the log"), std::string::npos);
}

TEST(HtmlReport, LeadsEveryLinkToItsPlace) {
    ExpectSoundAnchors(MadeUp());
    ExpectSoundAnchors({{MadeUp().runs[0], With(result::Verdict::Pass).runs[0], MadeUp().runs[0]}});
}

TEST(HtmlReport, KeepsTheAnchorsOfTheFirstRunWithoutPrefix) {
    const auto page = Read(HtmlReport({{MadeUp().runs[0], MadeUp().runs[0]}}));
    for (const char* const anchor : {"made-up.fail", "run2-made-up.fail", "L3", "run2-L3", "run1", "run2"}) {
        EXPECT_TRUE(ById(page, anchor)) << anchor;
    }
}

TEST(HtmlReport, LeavesOutWhatTheRunDoesNotHave) {
    const auto page = Read(HtmlReport(With(result::Verdict::Pass)));
    EXPECT_EQ(page.select_nodes("//h2").size(), 1U);
    EXPECT_FALSE(page.select_node("//form"));
    EXPECT_FALSE(page.select_node("//*[local-name()='svg']"));
}

TEST(HtmlReport, OfNoRunIsAPageToo) {
    EXPECT_EQ(HeadlineOf({}), "The DVR passed: 0 of 0 checks");
}

/// Puts the text everywhere in a result that may hold what others wrote.
result::Result WithEverywhere(const std::string& text) {
    result::Result result = MadeUp();
    result::RunResult& run = result.runs.at(0);
    run.name = run.switches = text;
    for (result::CheckResult& check : run.checks) {
        check.requirement = check.expected = check.found = text;
        check.evidence = {{text, 3, text}, {text, 99, text}};
    }
    for (result::Step& step : run.steps) {
        step.text = text;
    }
    for (result::LogEntry& entry : run.log) {
        entry.text = text;
    }
    run.timings.at(0).request = text;
    return result;
}

class HtmlReportOfHostileText : public testing::TestWithParam<std::string> {};

TEST_P(HtmlReportOfHostileText, HoldsItAsText) {
    const std::string usual = HtmlReport(MadeUp());
    result::Result result = WithEverywhere(GetParam());
    result.runs.push_back(result.runs.front());
    const std::string text = HtmlReport(result);
    const auto page = Read(text);
    EXPECT_EQ(page.select_nodes("//script").size(), 1U);
    EXPECT_EQ(text.find("<script"), text.rfind("<script"));
    EXPECT_EQ(text.find("<style"), text.rfind("<style"));
    EXPECT_FALSE(page.select_node("//img | //*[@onerror]"));
    EXPECT_EQ(text.find('\0'), std::string::npos);
    EXPECT_EQ(text.find("&#"),
              text.find("&#10;"));  // of control characters only an attribute's newline
}

INSTANTIATE_TEST_SUITE_P(Texts, HtmlReportOfHostileText,
                         testing::Values("</script><script>alert(1)</script>", "]]></style><script>alert(1)",
                                         "\"><img src=x onerror=alert(1)>", "' onerror='alert(1)",
                                         "<!-- --> <![CDATA[", "&lt;img&gt; &amp; &#0; &#x202e;",
                                         "\xff\xfe\xc0\x80 \xed\xa0\x80",
                                         std::string("\0\x01\x1b[31m\r\n\t\x7f", 11), "</svg></text><p>"));

TEST(HtmlReport, ShowsHostileTextUnchanged) {
    const std::string hostile = "</code></li><script>alert('&amp;')</script>";
    const auto page = Read(HtmlReport(WithEverywhere(hostile)));
    EXPECT_EQ(ById(page, "L1").select_node(".//code").node().child_value(), hostile);
}

}  // namespace
}  // namespace rig::html
