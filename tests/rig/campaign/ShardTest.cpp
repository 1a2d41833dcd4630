#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "rig/campaign/Shard.h"

namespace rig::campaign {
namespace {

using Variables = std::map<std::string, std::string>;

ShardChoice Choice(const Variables& variables) {
    return ShardInEnvironment([&variables](const char* name) {
        const auto found = variables.find(name);
        return found == variables.end() ? nullptr : found->second.c_str();
    });
}

/// @return the part, and where it was taken from
std::string Taken(const Variables& variables) {
    const ShardChoice choice = Choice(variables);
    EXPECT_EQ(choice.ignored, std::vector<std::string>());
    return choice.shard ? choice.shard->Words() + ", " + choice.shard->from : "";
}

Variables Slurm(const char* index, const char* count, const char* least, const char* most,
                const char* step = "1") {
    return {{"SLURM_ARRAY_TASK_ID", index},
            {"SLURM_ARRAY_TASK_COUNT", count},
            {"SLURM_ARRAY_TASK_MIN", least},
            {"SLURM_ARRAY_TASK_MAX", most},
            {"SLURM_ARRAY_TASK_STEP", step}};
}

TEST(Shard, IsReadFromTwoNumbers) {
    for (const char* text : {"1/1", "2/3", "3/3", "01/2", "1/4294967295"}) {
        EXPECT_TRUE(ParseShard(text)) << text;
    }
    EXPECT_EQ(ParseShard("2/3")->Words(), "part 2 of 3");
    for (const char* text : {"0/3", "4/3", "x", "", "/", "1", "1/", "/1", "1/x", "-1/3", "1/-3", "1/2/3",
                             "1/ 2", "1.0/2", "0/0", "1/4294967296", "4294967297/4294967298"}) {
        EXPECT_FALSE(ParseShard(text)) << text;
    }
}

TEST(ShardInEnvironment, IsOfTheUsualRunners) {
    EXPECT_EQ(Taken({}), "");
    EXPECT_EQ(Taken({{"CI_NODE_INDEX", "2"}, {"CI_NODE_TOTAL", "3"}}),
              "part 2 of 3, CI_NODE_INDEX and CI_NODE_TOTAL");
    EXPECT_EQ(Taken({{"TEST_SHARD_INDEX", "0"}, {"TEST_TOTAL_SHARDS", "3"}}),
              "part 1 of 3, TEST_SHARD_INDEX and TEST_TOTAL_SHARDS");
    EXPECT_EQ(Taken({{"SLURM_ARRAY_TASK_ID", "3"}, {"SLURM_ARRAY_TASK_COUNT", "3"}}),
              "part 3 of 3, SLURM_ARRAY_TASK_ID and SLURM_ARRAY_TASK_COUNT");
}

TEST(ShardInEnvironment, CountsAnArrayFromItsLowestIndexInItsSteps) {
    const std::string from = ", SLURM_ARRAY_TASK_ID and SLURM_ARRAY_TASK_COUNT";
    EXPECT_EQ(Taken(Slurm("0", "4", "0", "3")), "part 1 of 4" + from);
    EXPECT_EQ(Taken(Slurm("13", "4", "10", "13")), "part 4 of 4" + from);
    EXPECT_EQ(Taken(Slurm("5", "3", "0", "10", "5")), "part 2 of 3" + from);
}

TEST(ShardInEnvironment, IsNotTakenFromAnArrayWithGaps) {
    for (const char* index : {"1", "3", "7"}) {
        const ShardChoice choice = Choice(Slurm(index, "3", "1", "7"));
        EXPECT_FALSE(choice.shard) << index;
        EXPECT_EQ(choice.ignored.size(), 1U) << index;
    }
}

TEST(ShardInEnvironment, IsNotOneNodeThatRunsAll) {
    EXPECT_EQ(Taken({{"CI_NODE_TOTAL", "1"}}), "");
}

TEST(ShardInEnvironment, SaysWhatItDoesNotTake) {
    const ShardChoice choice = Choice({{"CI_NODE_INDEX", "0"},
                                       {"CI_NODE_TOTAL", "3"},
                                       {"TEST_SHARD_INDEX", "1"},
                                       {"TEST_TOTAL_SHARDS", "2"},
                                       {"SLURM_ARRAY_TASK_ID", "1\n"}});
    EXPECT_EQ(choice.shard->Words(), "part 2 of 2");
    EXPECT_EQ(choice.ignored,
              (std::vector<std::string>{
                  "not taken: CI_NODE_INDEX=0, CI_NODE_TOTAL=3; expected one of the parts, counted from 1",
                  "not taken: SLURM_ARRAY_TASK_ID=1\\n; expected one of the parts, counted from "
                  "SLURM_ARRAY_TASK_MIN without a gap"}));
}

TEST(ShardInEnvironment, TakesOneRunnersWord) {
    Variables variables = Slurm("1", "2", "1", "2");
    variables["CI_NODE_INDEX"] = variables["CI_NODE_TOTAL"] = "2";
    const ShardChoice choice = Choice(variables);
    EXPECT_EQ(choice.shard->Words(), "part 2 of 2");
    ASSERT_EQ(choice.ignored.size(), 1U);
    EXPECT_NE(choice.ignored[0].find("; CI_NODE_INDEX and CI_NODE_TOTAL come first"), std::string::npos);
}

TEST(ShardInEnvironment, IsNotTakenFromNumbersThatNameNoPart) {
    for (const auto& [index, total] :
         {std::pair("4", "3"), std::pair("x", "3"), std::pair("", "3"), std::pair("1", ""),
          std::pair("-1", "3"), std::pair("0", "0"), std::pair("1", "4294967297"),
          std::pair("18446744073709551617", "3")}) {
        const ShardChoice choice = Choice({{"CI_NODE_INDEX", index}, {"CI_NODE_TOTAL", total}});
        EXPECT_FALSE(choice.shard) << index << " " << total;
        EXPECT_EQ(choice.ignored.size(), 1U) << index << " " << total;
    }
    EXPECT_EQ(Choice({{"CI_NODE_TOTAL", "3"}}).ignored.size(), 1U) << "each of three would run all";
    EXPECT_EQ(Choice({{"TEST_SHARD_INDEX", "3"}, {"TEST_TOTAL_SHARDS", "3"}}).ignored.size(), 1U);
}

}  // namespace
}  // namespace rig::campaign
