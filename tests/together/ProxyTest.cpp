#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "Export.h"
#include "tests/support/LogLine.h"
#include "tests/support/Until.h"

// An export through an idle proxy is the same as without one.

namespace {

struct ProxiedRun {
    const char* name;
    const char* dialect;
    const char* switches;
};

class ThroughProxy : public testing::TestWithParam<ProxiedRun> {};

/// What the proxy's log tells: "-> MESSAGE" of the DVR, "<- MESSAGE" of the harness, and "close dvr" or the
/// like.
std::vector<std::string> ToldBy(const RunningProxy& proxy) {
    std::vector<std::string> told;
    for (const std::string& line : proxy.Log()) {
        const nlohmann::json event = nlohmann::json::parse(line);
        if (event.contains("message")) {
            told.push_back((event.at("direction") == "dvr->harness" ? "-> " : "<- ") +
                           event.at("message").get<std::string>());
        } else if (event.contains("by")) {
            told.push_back(event.at("event").get<std::string>() + " " + event.at("by").get<std::string>());
        }
    }
    return told;
}

/// The same of the DVR's transcript, and how it ends the connection.
std::vector<std::string> ToldBy(const Dvr& dvr) {
    std::vector<std::string> told;
    for (const std::string& line : dvr.Transcript()) {
        if (StartsWith(line, "-> ") or StartsWith(line, "<- ")) {
            told.push_back(line.substr(0, line.find(' ', 3)));
        }
    }
    told.insert(told.end(), {"half-close dvr", "close dvr"});
    return told;
}

/// @return what the judge said, without times
std::string Verdict(const Judged& judged) {
    std::string text = judged.verdict;
    for (const auto& [check, found] : judged.found) {
        text += "\n" + check;
    }
    for (const std::string& check : judged.passed) {
        text += "\n" + check + " passed";
    }
    return text;
}

/// @return what an export leaves: log, verdict, status of the DVR
std::vector<std::string> LeftBy(const Export& one) {
    std::vector<std::string> left = one.Log();
    left.push_back(Verdict(one.Judge()));
    left.push_back(std::to_string(one.DvrStatus()));
    return left;
}

std::vector<std::string> LeftBy(const Recipe& recipe) {
    return LeftBy(Export(recipe));
}

TEST_P(ThroughProxy, AnExportIsLoggedAndJudgedAsWithoutIt) {
    const auto& [name, dialect, switches] = GetParam();
    const std::vector<std::string> direct = LeftBy({"", dialect, "", switches});
    const Export proxied({"", dialect, "", switches, kThroughProxy});
    EXPECT_EQ(direct, LeftBy(proxied));

    const std::vector<std::string> expected = ToldBy(proxied.GetDvr());
    Until([&] { return ToldBy(proxied.GetProxy()).size() >= expected.size(); });
    EXPECT_EQ(expected, ToldBy(proxied.GetProxy()));
}

TEST_P(ThroughProxy, AnExportIsTheSameIfItStartsTheHarness) {
    const auto& [name, dialect, switches] = GetParam();
    const std::vector<std::string> direct = LeftBy({"", dialect, "", switches});
    setenv("VELLORAN_HARNESS", VELLORAN_THROUGH_PROXY " " VELLORAN_RIG " " VELLORAN_PROGRAM, 1);
    EXPECT_EQ(direct, LeftBy({"", dialect, "", switches}));
    unsetenv("VELLORAN_HARNESS");
}

INSTANTIATE_TEST_SUITE_P(Export, ThroughProxy,
                         testing::Values(ProxiedRun{"1", "1", ""}, ProxiedRun{"2", "2", ""},
                                         ProxiedRun{"2_closed", "2", "-c 2"}),
                         [](const auto& run) { return std::string(run.param.name); });

}  // namespace
