#include <gtest/gtest.h>

#include <sstream>

#include "rig/result/Reports.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::result {
namespace {

TEST(TapReport, TellsEachVerdict) {
    const std::string text = TapReport(MadeUp());
    EXPECT_EQ(
        text.rfind("TAP version 13\n1..6\nok 1 - made-up.log:1 made-up.pass\n"
                   "not ok 2 - made-up.log:1 made-up.known # TODO known failure\n# KNOWN FAILURE: expected ",
                   0),
        0U);
    EXPECT_NE(text.find("\nnot ok 6 - made-up.log:1 made-up.fail\n# FAIL: expected "), std::string::npos);
}

TEST(TapReport, PassesAWarningWithAComment) {
    EXPECT_EQ(
        TapReport(With(Verdict::Warning)),
        "TAP version 13\n1..1\nok 1 - made-up.log:1 made-up.check\n# WARNING: expected what was expected "
        "of made-up.check, found what was found of made-up.check\n");
}

/// @return the numbers of the tests in order of appearance; the plan first
std::vector<std::size_t> NumbersOf(const std::string& report) {
    std::vector<std::size_t> numbers;
    std::istringstream lines(report);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "TAP version 13");
    while (std::getline(lines, line)) {
        for (const std::string start : {"1..", "ok ", "not ok "}) {
            if (line.rfind(start, 0) == 0) {
                numbers.push_back(std::stoul(line.substr(start.size())));
                line.clear();
            }
        }
        EXPECT_TRUE(line.empty() || line[0] == '#') << line;
    }
    return numbers;
}

TEST(TapReport, NumbersItsTestsOverAllRunsAsPlanned) {
    const auto numbers =
        NumbersOf(TapReport({{MadeUp().runs[0], MadeUp().runs[0], With(Verdict::Pass).runs[0]}}));
    ASSERT_EQ(numbers.size(), 14U);
    EXPECT_EQ(numbers[0], 13U);
    for (std::size_t number = 1; number < numbers.size(); ++number) {
        EXPECT_EQ(numbers[number], number);
    }
}

TEST(TapReport, MistakesNothingInTheResultForALineOrADirective) {
    Result result = MadeUp();
    result.runs[0].name = "a # TODO\nok 7";
    result.runs[0].checks[5].found = "nothing\nBail out!\r\nok 8";
    EXPECT_EQ(NumbersOf(TapReport(result)).size(), 7U);
    EXPECT_EQ(TapReport(result).find('#'), TapReport(result).find("# TODO known failure"));
}

}  // namespace
}  // namespace rig::result
