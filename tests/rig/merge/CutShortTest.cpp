#include <filesystem>

#include "tests/rig/merge/MadeUp.h"

namespace {

const std::vector<MadeUpCase> kKilled = {
    {"clean-2.0"}, {"event-2.0", Outcome::Running}, {"xfer-2.0", Outcome::NotRun}};

/// A campaign that was killed: its record says that it still runs.
class CutShortTest : public MergeTest {
 protected:
    void Killed(const std::string& name, const std::vector<MadeUpCase>& cases = kKilled) const {
        Campaign(name, cases, [](Json& json) {
            json["state"] = "running";
            json["end"] = nullptr;
            json["outcome"] = nullptr;
            json["status"] = nullptr;
        });
    }
};

TEST_F(CutShortTest, IsNeverTakenForOneThatRuns) {
    Killed("a");
    Campaign("b", {{"clean-2.0", Outcome::Fail}});
    const ProgramResult result = Merge({"a", "b", "--out", "out"});
    EXPECT_EQ(result.status, 130);
    ExpectHolds(result.output, "no part ran 1 case: xfer-2.0\n");
    ExpectHolds(result.output, "a: killed\nb: finished\n");
    const Json campaign = JsonOf();
    EXPECT_EQ(campaign["state"], "interrupted");
    EXPECT_EQ(campaign["outcome"], "INTERRUPTED");
    EXPECT_EQ(Each(campaign["cases"], "outcome"), (Strings{"FAIL", "INTERRUPTED", "NOT RUN"}));
    EXPECT_EQ(Each(campaign["cases"], "reason"),
              (Strings{"", "its campaign was killed while it ran", "its campaign was killed before it"}));
    EXPECT_EQ(campaign["merged"]["parts"][0]["state"], "killed");
    EXPECT_EQ(campaign["cases"][1]["files"], Json(Strings{"case.json", "harness.log"}));
    Json alone = JsonOf("out/cases/event-2.0/case.json");
    alone.erase("format");
    EXPECT_EQ(campaign["cases"][1], alone);
    ExpectHolds(TextOf("out/campaign.tap"), "not ok 2 - event-2.0 campaign.case\n");
    ExpectHolds(TextOf("out/index.html"), "The campaign was interrupted: 0 of 3 cases passed");
}

TEST_F(CutShortTest, CountsLessThanOneThatRanTheCaseToItsEnd) {
    Killed("a");
    Campaign("b", {{"event-2.0"}, {"xfer-2.0"}});
    const ProgramResult result = Merge({"a", "b", "--out", "out"});
    EXPECT_EQ(result.status, 0) << result.output;
    const Json campaign = JsonOf();
    EXPECT_EQ(campaign["state"], "finished");
    EXPECT_EQ(campaign["merged"]["doubles"], Json(Strings{"event-2.0"}));
    EXPECT_EQ(campaign["merged"]["others"][0]["outcome"], "RUNNING");
    ExpectHolds(TextOf("out/cases/event-2.0/part-1/harness.log"), "of " + PathOf("a"));
}

TEST_F(CutShortTest, HasWhatItsCasesSayThoughItsRecordDoesNotYet) {
    Killed("a", {{"clean-2.0"}, {"event-2.0", Outcome::Fail}});
    Change("a/campaign.json", [](Json& json) {
        json["cases"][0]["outcome"] = "RUNNING";
        json["cases"][1]["outcome"] = "NOT RUN";
    });
    EXPECT_EQ(Merge({"a", "--out", "out"}).status, 1);
    EXPECT_EQ(Each(JsonOf()["cases"], "outcome"), (Strings{"PASS", "FAIL"}));
    EXPECT_EQ(JsonOf()["state"], "finished") << "every case came to its end";
}

TEST_F(CutShortTest, IsInterruptedIfASignalCame) {
    Campaign("a", {{"clean-2.0", Outcome::Interrupted}, {"xfer-2.0", Outcome::NotRun}},
             [](Json& json) { json["state"] = "interrupted"; });
    const ProgramResult result = Merge({"a", "--out", "out"});
    EXPECT_EQ(result.status, 130);
    EXPECT_EQ(Each(JsonOf()["cases"], "reason"), (Strings{"", "its campaign was interrupted before it"}));
    EXPECT_EQ(JsonOf()["merged"]["parts"][0]["state"], "interrupted");
}

}  // namespace
