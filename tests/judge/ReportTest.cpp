#include <gtest/gtest.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

#include "Judging.h"
#include "rig/report/JsonReport.h"
#include "rig/report/JunitReport.h"
#include "rig/report/TapReport.h"
#include "rig/report/TextReport.h"
#include "rig/report/WriteWhole.h"

namespace rig::report {
namespace {

TEST(TextReport, TellsWhatWasExpectedAndFoundAndWhere) {
    const std::string text = TextReport(Judged(RealLog("d2-missing-source")), false);
    EXPECT_NE(text.find("FAIL event-list.source\n  EVENT_LIST names its source.\n  expected: source in "
                        "EVENT_LIST\n  found:    EVENT_LIST without source (1x)\n  test.log:"),
              std::string::npos);
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_EQ(text.rfind("FAIL: 1 run, "), text.rfind('\n', text.size() - 2) + 1);
}

TEST(TextReport, ShowsAMatrixOfManyRuns) {
    const std::string text = TextReport(Judged(RealLog("clean-2.0") + RealLog("d2-missing-source")), false);
    EXPECT_NE(text.find("event-list.source              .   F\n"), std::string::npos);
}

TEST(Timeline, MarksTheFaultBetweenTheMessages) {
    const std::string text = Timeline(Judged(RealLog("event-2.0")));
    EXPECT_NE(text.find("    !!! fault   processing 'invalidEvent' option [event]\n"), std::string::npos);
    EXPECT_NE(text.find("    <-- harness NEXT_EVENT -0001\n"), std::string::npos);
    EXPECT_NE(text.find("DVR -->         INVALID_EVENT -0001\n"), std::string::npos);
}

TEST(JsonReport, HoldsEveryCheckAndIsValidWhateverTheLogHolds) {
    Result result = Judged(RealLog("d2-missing-source"));
    result.runs.at(0).checks.at(0).found = "\xff\"\n";
    const auto json = nlohmann::json::parse(JsonReport(result));
    EXPECT_EQ(json["verdict"], "FAIL");
    EXPECT_EQ(json["runs"][0]["checks"].size(), result.runs[0].checks.size());
    EXPECT_EQ(json["runs"][0]["switches"], "-p 2");
}

TEST(JunitReport, CountsItsCases) {
    const Result result = Judged(RealLog("d2-missing-source") + RealLog("rehash-xfer-2.0"));
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(JunitReport(result).c_str()));
    const pugi::xml_node suite = document.child("testsuites").child("testsuite");
    EXPECT_EQ(suite.attribute("failures").as_int(), 1);
    EXPECT_EQ(suite.attribute("tests").as_ullong(), result.runs[0].checks.size());
    EXPECT_STREQ(suite.find_child_by_attribute("testcase", "name", "event-list.source")
                     .child("failure")
                     .attribute("type")
                     .value(),
                 "FAIL");
    EXPECT_EQ(suite.next_sibling("testsuite").attribute("failures").as_int(), 0);
}

TEST(TapReport, PlansAndNumbersItsTests) {
    const Result result = Judged(RealLog("d2-missing-source"));
    const std::string text = TapReport(result);
    EXPECT_EQ(
        text.rfind("TAP version 13\n1.." + std::to_string(result.runs[0].checks.size()) + "\nok 1 - ", 0),
        0U);
    EXPECT_NE(text.find("not ok 12 - test.log:1 event-list.source\n# FAIL: expected "), std::string::npos);
}

TEST(WriteWhole, ReplacesAFile) {
    const std::string path = testing::TempDir() + "velloran-write-whole";
    WriteWhole(path, "first, and longer");
    WriteWhole(path, "second");
    std::ifstream file(path);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "second");
    std::remove(path.c_str());
}

TEST(WriteWhole, SaysWhatItCannotWrite) {
    EXPECT_THROW(WriteWhole("/nowhere/report", "text"), std::runtime_error);
}

}  // namespace
}  // namespace rig::report
