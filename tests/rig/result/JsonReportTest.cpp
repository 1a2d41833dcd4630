#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "rig/result/Reports.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::result {
namespace {

using nlohmann::json;

std::string KeysOf(const json& object) {
    std::string keys;
    for (const auto& item : object.items()) {
        keys += item.key() + " ";
    }
    return keys;
}

TEST(JsonReport, HasTheSameShapeForEveryRun) {
    Result result = MadeUp();
    result.runs.push_back(With(Verdict::Pass).runs[0]);
    const json report = json::parse(JsonReport(result));
    EXPECT_EQ(KeysOf(report), "runs verdict ");
    for (const json& run : report["runs"]) {
        EXPECT_EQ(KeysOf(run), "begin checks end name steps switches timings verdict ");
        for (const json& check : run["checks"]) {
            EXPECT_EQ(KeysOf(check), "evidence expected found id requirement verdict ");
            for (const json& line : check["evidence"]) {
                EXPECT_EQ(KeysOf(line), "file line note text ");
                EXPECT_TRUE(line["line"].is_number_unsigned());
            }
        }
        for (const json& step : run["steps"]) {
            EXPECT_EQ(KeysOf(step), "kind line text time ");
            EXPECT_TRUE(step["time"].is_number_integer() || step["time"].is_null());
        }
        for (const json& timing : run["timings"]) {
            EXPECT_EQ(KeysOf(timing), "count longest median percentile95 percentile99 request ");
        }
    }
}

TEST(JsonReport, HoldsTheResult) {
    const json report = json::parse(JsonReport(MadeUp()));
    EXPECT_EQ(report["verdict"], "FAIL");
    const json& run = report["runs"][0];
    EXPECT_EQ(run["switches"], "-p 2 -e");
    EXPECT_EQ(run["end"].get<std::int64_t>() - run["begin"].get<std::int64_t>(), 2'500'000);
    EXPECT_EQ(run["checks"].size(), 6U);
    EXPECT_EQ(run["checks"][5]["evidence"][0]["line"], 3);
    EXPECT_EQ(run["steps"][1]["kind"], "fault");
    EXPECT_TRUE(run["steps"][3]["time"].is_null());
}

TEST(JsonReport, IsValidWhateverTheLogHolds) {
    Result result = MadeUp();
    result.runs[0].checks[0].found = std::string("\xff\"\\\n\0\x1b", 6);
    const json report = json::parse(JsonReport(result));
    EXPECT_EQ(report["runs"][0]["checks"][0]["found"], std::string("\xef\xbf\xbd\"\\\n\0\x1b", 8));
}

TEST(JsonReport, IsReadBack) {
    Result result = MadeUp();
    result.runs.push_back(With(Verdict::KnownFailure).runs[0]);
    const std::string report = JsonReport(result);
    EXPECT_EQ(JsonReport(ReadJsonReport(report)), report);
    EXPECT_THROW(ReadJsonReport("{}"), std::exception);
}

}  // namespace
}  // namespace rig::result
