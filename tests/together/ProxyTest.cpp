#include <gtest/gtest.h>

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

TEST_P(ThroughProxy, AnExportIsLoggedAndJudgedAsWithoutIt) {
    const auto& [name, dialect, switches] = GetParam();
    std::vector<std::string> log;
    std::string verdict;
    {
        const Export direct({"", dialect, "", switches});
        log = direct.Log();
        verdict = Verdict(direct.Judge());
    }
    const Export proxied({"", dialect, "", switches, kThroughProxy});
    EXPECT_EQ(0, proxied.DvrStatus());
    EXPECT_EQ(log, proxied.Log());
    EXPECT_EQ(verdict, Verdict(proxied.Judge()));

    const std::vector<std::string> expected = ToldBy(proxied.GetDvr());
    Until([&] { return ToldBy(proxied.GetProxy()).size() >= expected.size(); });
    EXPECT_EQ(expected, ToldBy(proxied.GetProxy()));
}

INSTANTIATE_TEST_SUITE_P(Export, ThroughProxy,
                         testing::Values(ProxiedRun{"1", "1", ""}, ProxiedRun{"2", "2", ""},
                                         ProxiedRun{"2_closed", "2", "-c 2"}),
                         [](const auto& run) { return std::string(run.param.name); });

}  // namespace
