#include <filesystem>

#include "tests/rig/merge/MadeUp.h"

namespace {

const Strings kAll = {"clean-2.0", "event-2.0", "xfer-2.0", "recovery-2.0"};

TEST_F(MergeTest, OfAllShardsIsTheWholeCampaign) {
    Shard("b", Around({"xfer-2.0"}), 2, 2, kAll);
    Shard("a", Around({"event-2.0"}), 1, 2, kAll);
    const ProgramResult result = Merge({"b", "a", "--out", "out"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_EQ(result.errors, "");
    ExpectHolds(result.output, "PASS: 4 PASS; see out/index.html\n");
    const Json campaign = JsonOf();
    EXPECT_EQ(campaign["outcome"], "PASS");
    EXPECT_EQ(campaign["state"], "finished");
    EXPECT_EQ(Each(campaign["cases"], "id"), kAll);
    EXPECT_EQ(campaign["begin"], JsonOf("b/campaign.json")["begin"]);
    EXPECT_EQ(campaign["end"], JsonOf("a/campaign.json")["end"]);
    EXPECT_EQ(campaign["seed"], 5);
    EXPECT_TRUE(campaign["shard"].is_null());
    const Json& merged = campaign["merged"];
    for (const char* none : {"differences", "doubles", "missing"}) {
        EXPECT_EQ(merged[none], Json::array()) << none;
    }
    EXPECT_EQ(Each(merged["parts"], "folder"), (Strings{"b", "a"}));
    EXPECT_EQ(merged["parts"][0]["shard"], Json({{"index", 2}, {"total", 2}, {"from", "--shard"}}));
    EXPECT_EQ(JsonOf("out/parts/1.json"), JsonOf("b/campaign.json"));
}

TEST_F(MergeTest, KeepsAllEvidence) {
    Shard("a", Around({"event-2.0"}), 1, 2, kAll);
    Shard("b", Around({"xfer-2.0"}), 2, 2, kAll);
    folder_.Write("b/cases/xfer-2.0/recovery/proxy.jsonl", "deep");
    folder_.Write("b/cases/xfer-2.0~1/harness.log", "an earlier attempt");
    folder_.Write("b/cases/clean-2.0~1/harness.log", "an earlier attempt");
    folder_.Write("a/cases/clean-2.0/part-2", "a name that is taken");
    Merge({"a", "b", "--out", "out"});
    for (const char* file : {"event-2.0/verdict.json", "clean-2.0/verdict.json", "clean-2.0/part-2"}) {
        EXPECT_EQ(TextOf(std::string("out/cases/") + file), TextOf(std::string("a/cases/") + file)) << file;
    }
    for (const char* file :
         {"xfer-2.0/case.json", "xfer-2.0/recovery/proxy.jsonl", "xfer-2.0~1/harness.log"}) {
        EXPECT_EQ(TextOf(std::string("out/cases/") + file), TextOf(std::string("b/cases/") + file)) << file;
    }
    EXPECT_EQ(TextOf("out/cases/recovery-2.0/part-2/harness.log"),
              TextOf("b/cases/recovery-2.0/harness.log"));
    EXPECT_EQ(TextOf("out/cases/clean-2.0/part-2~/harness.log"), TextOf("b/cases/clean-2.0/harness.log"));
    EXPECT_EQ(TextOf("out/cases/clean-2.0/part-2~~1/harness.log"), "an earlier attempt");
    EXPECT_EQ(JsonOf()["merged"]["others"][0], Json({{"case", "clean-2.0"},
                                                     {"part", 2},
                                                     {"outcome", "PASS"},
                                                     {"folder", "cases/clean-2.0/part-2~"}}));
}

TEST_F(MergeTest, TakesOfACaseThatRanTwiceTheWorse) {
    Campaign("a", Around({"xfer-2.0"}));
    Campaign("b", Around({"xfer-2.0", Outcome::Fail}));
    const ProgramResult result = Merge({"a", "b", "--out", "out"});
    EXPECT_EQ(result.status, 1);
    ExpectHolds(result.output,
                "several parts ran 1 case: xfer-2.0\n"
                "xfer-2.0: FAIL in b, which counts, but PASS in a\n");
    const Json campaign = JsonOf();
    EXPECT_EQ(campaign["outcome"], "FAIL");
    EXPECT_EQ(campaign["counts"], Json({{"FAIL", 1}, {"PASS", 2}}));
    EXPECT_EQ(campaign["merged"]["doubles"], Json(Strings{"xfer-2.0"}))
        << "the clean exports belong to each part";
    EXPECT_EQ(JsonOf("out/cases/xfer-2.0/case.json")["outcome"], "FAIL");
    EXPECT_EQ(JsonOf("out/cases/xfer-2.0/part-1/case.json")["outcome"], "PASS");
    ExpectHolds(TextOf("out/junit.xml"), "<failure message=\"FAIL: expected an answer, found one\"");
    ExpectHolds(TextOf("out/campaign.tap"), "not ok 2 - xfer-2.0 xfer.answer\n");
}

TEST_F(MergeTest, NeverPassesWhereACaseIsMissing) {
    const Strings all = {"clean-2.0",  "event-2.0", "split=2@GET_FILE-2.0",
                         "size-1.0-2", "new-2.0",   "recovery-2.0"};
    Shard("a", Around({"event-2.0"}), 1, 2, all);
    const ProgramResult result = Merge({"a", "--out", "out"});
    EXPECT_EQ(result.status, 2);
    ExpectHolds(result.output, "no part ran 3 cases: split=2@GET_FILE-2.0, size-1.0-2, new-2.0\n");
    ExpectHolds(result.output, "NOT RUN: 3 NOT RUN, 3 PASS; see ");
    const Json campaign = JsonOf();
    EXPECT_EQ(campaign["outcome"], "NOT RUN");
    EXPECT_EQ(Each(campaign["cases"], "id"), all);
    EXPECT_EQ(campaign["merged"]["missing"], Json(Strings{"split=2@GET_FILE-2.0", "size-1.0-2", "new-2.0"}));
    EXPECT_EQ(campaign["cases"][2]["reason"], "no part has it");
    EXPECT_EQ(campaign["cases"][2]["switches"], "-p 2 -c 1");
    EXPECT_EQ(campaign["cases"][3]["name"], "size-1.0");
    EXPECT_EQ(campaign["cases"][3]["run"], 2);
    EXPECT_EQ(campaign["cases"][3]["switches"], "-p 1 -z");
    EXPECT_EQ(campaign["cases"][4]["switches"], "") << "a case of another version";
    ExpectHolds(TextOf("out/junit.xml"),
                "INCONCLUSIVE: expected a run that the judge can judge, found no part has it");
    ExpectHolds(TextOf("out/campaign.tap"), "not ok 5 - new-2.0 campaign.case\n");
}

TEST_F(MergeTest, NamesFirstWhatThePartsDoNotHaveInCommon) {
    Campaign("a", Around({"event-2.0"}));
    Campaign("b", Around({"xfer-2.0"}), [](Json& json) {
        json["note"] = "firmware 4.2";
        json["seed"] = 6;
        json["versions"]["harnessSha256"] = "def";
        json["versions"]["host"] = "other";
        json["options"]["strict"] = true;
        json["commands"]["dvr"] = "./dvr\n";
        json["cases"][1]["switches"] = "-p 2 -x";
    });
    Campaign("c", Around({"xfer-2.0"}));
    const Strings expected = {"harness: 'abc' in a, c; 'def' in b",
                              "note: none in a, c; 'firmware 4.2' in b",
                              "option strict: 'false' in a, c; 'true' in b",
                              "command dvr: none in a, c; './dvr\\n' in b",
                              "seed: '5' in a, c; '6' in b",
                              "host: 'rig' in a, c; 'other' in b",
                              "switches of xfer-2.0: '-p 2 -x' in b; '-p 2' in c"};
    const ProgramResult result = Merge({"a", "b", "c", "--out", "out"});
    std::string lines;
    for (const std::string& one : expected) {
        lines += "the parts differ: " + one + "\n";
    }
    EXPECT_EQ(result.output.substr(0, lines.size()), lines);
    const Json campaign = JsonOf();
    EXPECT_EQ(campaign["merged"]["differences"], Json(expected));
    EXPECT_TRUE(campaign["seed"].is_null());
    EXPECT_EQ(campaign["note"], "; firmware 4.2");
    EXPECT_EQ(campaign["versions"]["host"], "rig; other");
}

TEST_F(MergeTest, NamesShardsThatDoNotBelongTogether) {
    Shard("a", Around({"event-2.0"}), 1, 2, kAll);
    Shard("b", Around({"xfer-2.0"}), 2, 3, {"clean-2.0", "xfer-2.0", "recovery-2.0"});
    Merge({"a", "b", "--out", "out"});
    EXPECT_EQ(JsonOf()["merged"]["differences"],
              Json(Strings{"number of shards: '2' in a; '3' in b",
                           "cases of all shards: other ones in b than in a"}));
}

TEST_F(MergeTest, KeepsTheOrderOfPartsThatWereNoShards) {
    Campaign("a", Around({"xfer-2.0"}));
    Campaign("b", Around({"event-2.0"}));
    Campaign("c", {{"clean-1.0"}, {"recovery-1.0"}});
    Merge({"a", "b", "c", "--out", "out"});
    EXPECT_EQ(Each(JsonOf()["cases"], "id"),
              (Strings{"clean-2.0", "xfer-2.0", "event-2.0", "recovery-2.0", "clean-1.0", "recovery-1.0"}));
}

TEST_F(MergeTest, LooksForAKnownFailureInAllParts) {
    const auto unseen = [](Json& json) { json["knownUnseen"] = Strings{"xfer.answer"}; };
    Campaign("a", Around({"event-2.0"}), unseen);
    Campaign("b", Around({"xfer-2.0", Outcome::KnownFailure}));
    Campaign("c", Around({"file-2.0"}), unseen);
    Shard("d", Around({"file-2.0"}), 2, 2, kAll);
    Change("d/campaign.json", [](Json& json) { json["shard"]["knownUnseen"] = Strings{"xfer.answer"}; });
    EXPECT_EQ(Merge({"a", "b", "--out", "seen"}).status, 0);
    EXPECT_EQ(JsonOf("seen/campaign.json")["knownUnseen"], Json::array());
    EXPECT_EQ(Merge({"a", "c", "--out", "unseen"}).status, 1);
    EXPECT_EQ(JsonOf("unseen/campaign.json")["knownUnseen"], Json(Strings{"xfer.answer"}));
    EXPECT_EQ(Merge({"b", "d", "--out", "both"}).status, 2) << "for want of a case only";
    EXPECT_EQ(JsonOf("both/campaign.json")["knownUnseen"], Json::array());
    ExpectHolds(TextOf("unseen/junit.xml"), "the list of known failures must be fixed");
}

TEST_F(MergeTest, GivesWhatDiffReads) {
    Campaign("a", Around({"xfer-2.0"}));
    Campaign("b", Around({"event-2.0", Outcome::Fail}));
    Merge({"a", "b", "--out", "out"});
    EXPECT_EQ(RunRig({"diff", PathOf("out"), PathOf("out")}).status, 0);
    const ProgramResult result = RunRig({"diff", PathOf("a"), PathOf("out")});
    ExpectHolds(result.output, "0 cases worse, 0 better, 1 changed, 3 the same\n");
}

TEST_F(MergeTest, FillsAFolderThatIsEmpty) {
    Campaign("a", Around({"xfer-2.0"}));
    std::filesystem::create_directory(PathOf("out"));
    EXPECT_EQ(Merge({"a", "--out", "out/"}).status, 0);
    EXPECT_TRUE(FileExists(PathOf("out/campaign.json")));
    EXPECT_EQ(Merge({"a", "--out", "new/place/out"}).status, 0);
    EXPECT_TRUE(FileExists(PathOf("new/place/out/campaign.json")));
}

}  // namespace
