#include <sys/wait.h>

#include <cstdlib>
#include <regex>

#include "tests/rig/merge/MadeUp.h"

namespace {

/// Campaigns of the real programs, of which each has a network of its own.
class ShardsTest : public CampaignTest {
 protected:
    /// Starts a campaign in a shell. @return its end
    static std::string Run(const std::string& options, const std::string& out) {
        return "unshare --net sh -c \"ip link set lo up; exec " + RigCommand().Line() +
               " run --cases event-2.0,config-2.0,xfer-2.0 --seed 5 --note 'unit 7' --dvr '" + Dvr() +
               "' --out " + out + " " + options + "\" >" + out + ".txt 2>&1";
    }

    static int Shell(const std::string& command) { return WEXITSTATUS(std::system(command.c_str())); }
};

/// Without what no two runs have in common: times, and where and how they were started.
Json Comparable(const Json& json, const std::string& out) {
    static const std::set<std::string> kOther = {"begin",  "end",         "times",  "timings",
                                                 "spread", "commandLine", "merged", "shard"};
    if (json.is_object()) {
        Json kept = Json::object();
        for (const auto& [name, value] : json.items()) {
            if (kOther.count(name) == 0) {
                kept[name] = Comparable(value, out);
            }
        }
        return kept;
    }
    if (json.is_array()) {
        Json kept = Json::array();
        for (const Json& one : json) {
            kept.push_back(Comparable(one, out));
        }
        return kept;
    }
    if (!json.is_string()) {
        return json;
    }
    // What stands in parentheses differs from run to run.
    const std::string text = std::regex_replace(json.get<std::string>(), std::regex(" \\(.*\\)$"), "");
    return std::regex_replace(text, std::regex("/mnt/(one|two|whole)/"), "");
}

TEST_F(ShardsTest, MergedAreTheCampaignInOne) {
    ASSERT_EQ(Shell(Run("--shard 1/2", "/mnt/one") + " & " + Run("--shard 2/2", "/mnt/two") +
                    "; two=$?; wait $! && exit $two"),
              0)
        << ReadFile("/mnt/one.txt") << ReadFile("/mnt/two.txt");
    ASSERT_EQ(Shell(Run("", "/mnt/whole")), 0) << ReadFile("/mnt/whole.txt");
    const ProgramResult result = RunRig({"merge", "/mnt/two", "/mnt/one", "--out", "/mnt/merged"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    ExpectHolds(result.output, "PASS: 5 PASS; see /mnt/merged/index.html\n");

    const Json merged = Json::parse(ReadFile("/mnt/merged/campaign.json"));
    const Json whole = Json::parse(ReadFile("/mnt/whole/campaign.json"));
    EXPECT_EQ(Comparable(merged, "merged"), Comparable(whole, "whole"))
        << Json::diff(Comparable(whole, "whole"), Comparable(merged, "merged")).dump(1);
    for (const char* none : {"differences", "doubles", "missing"}) {
        EXPECT_EQ(merged["merged"][none], Json::array()) << none;
    }
    const std::regex details(" \\(.*\\)");
    EXPECT_EQ(std::regex_replace(ReadFile("/mnt/merged/campaign.tap"), details, ""),
              std::regex_replace(ReadFile("/mnt/whole/campaign.tap"), details, ""));
    EXPECT_EQ(RunRig({"judge", "/mnt/merged/cases/xfer-2.0/harness.log"}).status, 0);
    ExpectHolds(RunRig({"diff", "/mnt/whole", "/mnt/merged"}).output, "of 5");
}

}  // namespace
