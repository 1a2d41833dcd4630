#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "Export.h"
#include "tests/support/LogLine.h"

// A recorder, which distrusts every backend, passes with the harness as the DVR does that checks it. So does
// one with all weaknesses: none shows.

namespace {

struct RecordedRun {
    const char* dialect;
    const char* switches;
};

class Recorded : public testing::TestWithParam<std::tuple<RecordedRun, const char*>> {};

/// All that a recorder may do about a text that is shorter than announced: it may wait.
constexpr const char* kWaits = "no-frame-timeout";

bool HasShortFrames(const std::string& switches) {
    return switches.find("-z") not_eq std::string::npos;
}

constexpr const char* kShown = "weakness ";

/// The names of those that have shown.
std::vector<std::string> WeaknessesIn(const Dvr& dvr) {
    std::vector<std::string> shown;
    for (const std::string& line : dvr.Transcript()) {
        if (StartsWith(line, kShown)) {
            const std::size_t start = std::string(kShown).size();
            shown.push_back(line.substr(start, line.find(' ', start) - start));
        }
    }
    return shown;
}

TEST_P(Recorded, ExportFailsNoCheck) {
    const auto [dialect, switches] = std::get<0>(GetParam());
    const char* const weaknesses = std::get<1>(GetParam());
    const Export played({"", dialect, "", switches, std::string(kRecorder) + weaknesses});
    EXPECT_EQ(played.DvrStatus(), 0) << played.GetDvr().StandardError();
    EXPECT_EQ(played.GetDvr().StandardError(), "");
    for (const std::string& weakness : WeaknessesIn(played.GetDvr())) {
        EXPECT_TRUE(HasShortFrames(switches) and weakness == kWaits) << weakness;
    }
    const Judged judged = played.Judge();
    EXPECT_FALSE(judged.passed.empty());
    for (const auto& [check, found] : judged.found) {
        EXPECT_TRUE(check.back() == '?' or check.back() == '!') << check << ": " << found;
    }
}

std::string NameOfRecorded(const testing::TestParamInfo<Recorded::ParamType>& info) {
    const auto [run, weaknesses] = info.param;
    std::string name = std::string(run.dialect) + "_0" + run.switches + (*weaknesses == '\0' ? "" : "_weak");
    name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

const std::vector<RecordedRun> kRecordedRuns = {
    {"1", ""},   {"1", "-g"},    {"1", "-z"}, {"2", ""},   {"2", "-c 1"}, {"2", "-e -f -t -r"}, {"2", "-x"},
    {"2", "-u"}, {"2", "-u -g"}, {"2", "-g"}, {"2", "-z"}, {"2", "-s 2"}, {"2", "-c 1 -d 1"},
};

INSTANTIATE_TEST_SUITE_P(Export, Recorded,
                         testing::Combine(testing::ValuesIn(kRecordedRuns),
                                          testing::Values("", " --weakness all")),
                         NameOfRecorded);

}  // namespace
