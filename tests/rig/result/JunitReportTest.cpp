#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <pugixml.hpp>

#include "rig/result/Reports.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::result {
namespace {

pugi::xml_node CaseOf(const pugi::xml_node& suite, const char* name) {
    return suite.find_child_by_attribute("testcase", "name", name);
}

/// @return whether another reader of XML takes the text for a JUnit file
bool Validates(const std::string& text) {
    const std::string path =
        testing::TempDir() + "velloran-" + testing::UnitTest::GetInstance()->current_test_info()->name();
    std::ofstream(path) << text;
    const int status =
        std::system(("xmllint --noout --schema " VELLORAN_JUNIT_SCHEMA " " + path + " 2>&1").c_str());
    std::remove(path.c_str());
    EXPECT_NE(WEXITSTATUS(status), 127) << "expected xmllint, of libxml2-utils";
    return status == 0;
}

TEST(JunitReport, TellsEachVerdictInItsOwnWay) {
    const auto document = Read(JunitReport(MadeUp()));
    const pugi::xml_node suite = document.child("testsuites").child("testsuite");
    EXPECT_STREQ(suite.attribute("name").value(), "made-up.log:1 velloran -p 2 -e");
    EXPECT_STREQ(suite.attribute("timestamp").value(), "2026-11-20T22:03:07");
    EXPECT_STREQ(suite.attribute("time").value(), "2.500");
    EXPECT_EQ(suite.attribute("tests").as_int(), 6);
    EXPECT_EQ(suite.attribute("failures").as_int(), 1);
    EXPECT_EQ(suite.attribute("errors").as_int(), 2);
    EXPECT_EQ(suite.attribute("skipped").as_int(), 2);
    EXPECT_FALSE(CaseOf(suite, "made-up.pass").first_child());
    EXPECT_STREQ(CaseOf(suite, "made-up.environment").child("error").attribute("type").value(),
                 "ENVIRONMENT");
    EXPECT_STREQ(CaseOf(suite, "made-up.inconclusive").child("error").attribute("message").value(),
                 "INCONCLUSIVE: expected what was expected of made-up.inconclusive, found what was found of "
                 "made-up.inconclusive");
    EXPECT_STREQ(CaseOf(suite, "made-up.fail").child("failure").child_value(),
                 "made-up.log:3: Sending DONE\nmade-up.log:99: not of this run\n");
}

TEST(JunitReport, PassesAWarningWithItsSentenceInTheSuitesOutput) {
    Result result = With(Verdict::Warning);
    result.runs[0].checks[0].evidence = {{"made-up.log", 3, "Sending DONE"}};
    const std::string text = JunitReport(result);
    const auto document = Read(text);
    const pugi::xml_node suite = document.child("testsuites").child("testsuite");
    EXPECT_EQ(suite.attribute("tests").as_int(), 1);
    for (const char* const count : {"failures", "errors", "skipped"}) {
        EXPECT_EQ(suite.attribute(count).as_int(), 0) << count;
    }
    EXPECT_FALSE(CaseOf(suite, "made-up.check").first_child());
    EXPECT_STREQ(
        suite.child("system-out").child_value(),
        "made-up.check: WARNING: expected what was expected of made-up.check, found what was found of "
        "made-up.check\nmade-up.log:3: Sending DONE\n");
    EXPECT_TRUE(Validates(text));
}

TEST(JunitReport, GivesEachCaseNameClassAndTime) {
    const auto document = Read(JunitReport(MadeUp()));
    for (const auto& test : document.select_nodes("//testcase")) {
        EXPECT_EQ(std::string(test.node().attribute("name").value()).rfind("made-up.", 0), 0U);
        EXPECT_STREQ(test.node().attribute("classname").value(), "velloran.made-up");
        EXPECT_STREQ(test.node().attribute("time").value(), "0.000");
    }
}

TEST(JunitReport, Validates) {
    Result result = MadeUp();
    result.runs.push_back(With(Verdict::Environment).runs[0]);
    EXPECT_TRUE(Validates(JunitReport(result)));
    EXPECT_TRUE(Validates(JunitReport({})));
}

TEST(JunitReport, ValidatesWhateverTheLogHolds) {
    Result result = MadeUp();
    const std::string hostile("\xff\0\x1b]]></failure>\"&'", 19);
    for (CheckResult& check : result.runs[0].checks) {
        check.found = hostile;
        check.evidence = {{hostile, 1, hostile}};
    }
    result.runs[0].name = result.runs[0].switches = hostile;
    EXPECT_TRUE(Validates(JunitReport(result)));
}

TEST(JunitSchema, RefusesWhatReadersRefuse) {
    const std::string good = JunitReport(MadeUp());
    for (const char* const needed :
         {" classname=", " time=\"0.000\"", " hostname=", "<testcase name=\"made-up.fail\""}) {
        std::string bad = good;
        bad.insert(bad.find(needed) + 1, "x");
        EXPECT_FALSE(Validates(bad)) << needed;
    }
}

}  // namespace
}  // namespace rig::result
