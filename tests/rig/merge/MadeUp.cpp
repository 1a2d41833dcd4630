#include "tests/rig/merge/MadeUp.h"

#include <unistd.h>

#include <filesystem>

#include "rig/base/Affix.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/evidence/RecordReader.h"
#include "rig/result/Reports.h"
#include "tests/support/ReadFile.h"

namespace {

using namespace rig;
using campaign::Case;
using campaign::CaseRecord;
using result::Verdict;

constexpr std::int64_t kMinute = 60'000'000;  // microseconds

Verdict VerdictOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Pass:
            return Verdict::Pass;
        case Outcome::KnownFailure:
            return Verdict::KnownFailure;
        case Outcome::Fail:
            return Verdict::Fail;
        default:
            return Verdict::Inconclusive;
    }
}

CaseRecord RecordOf(const MadeUpCase& one) {
    CaseRecord record;
    record.id = one.id;
    record.plan = {one.id, 2, "-p 2", "A sentence.",
                   StartsWith(one.id, "clean")      ? Case::Role::First
                   : StartsWith(one.id, "recovery") ? Case::Role::Last
                                                    : Case::Role::Fault};
    record.outcome = one.outcome;
    return record;
}

void WriteCase(const std::string& campaign, CaseRecord& record) {
    const campaign::CaseFolder folder(campaign + "/" + record.Folder());
    folder.Write("harness.log", "of " + campaign + "\n");
    if (record.outcome != Outcome::Running) {
        record.verdict = VerdictOf(record.outcome);
        record.checks = {{"xfer.answer", "An answer.", *record.verdict, "an answer", "one", {}}};
        result::RunResult run;
        run.name = record.id;
        run.checks = record.checks;
        folder.Write("verdict.json", result::JsonReport({{run}}));
        record.files = {"case.json", "harness.log", "verdict.json"};
    }
    folder.Write("case.json", campaign::CaseJson(record));
}

}  // namespace

std::vector<MadeUpCase> Around(const MadeUpCase& one) {
    return {{"clean-2.0"}, one, {"recovery-2.0"}};
}

void WriteCampaign(const std::string& folder, const std::vector<MadeUpCase>& cases) {
    static std::int64_t begin = 1'795'000'000'000'000;
    begin += kMinute;
    campaign::CampaignRecord record;
    record.begin = begin;
    record.end = begin + kMinute;
    record.state = "finished";
    record.commandLine = {"velloran-rig", "run"};
    record.versions = {{"velloran-rig", "1"}, {"harnessSha256", "abc"}, {"host", "rig"}};
    record.seed = 5;
    std::filesystem::create_directories(folder);
    for (const MadeUpCase& one : cases) {
        CaseRecord made = RecordOf(one);
        if (one.outcome != Outcome::NotRun) {
            WriteCase(folder, made);
        }
        record.cases.push_back(std::move(made));
    }
    campaign::WriteRecord(folder, record);
    campaign::WriteReports(folder, {});
}

void MergeTest::Campaign(const std::string& name, const std::vector<MadeUpCase>& cases,
                         const std::function<void(Json&)>& change) const {
    WriteCampaign(PathOf(name), cases);
    if (change) {
        Change(name + "/campaign.json", change);
    }
}

void MergeTest::Shard(const std::string& name, const std::vector<MadeUpCase>& cases, int index, int total,
                      const std::vector<std::string>& all) const {
    Campaign(name, cases, [&](Json& json) {
        json["shard"] = {{"index", index},
                         {"total", total},
                         {"from", "--shard"},
                         {"cases", all},
                         {"knownUnseen", Json::array()}};
    });
}

void MergeTest::Change(const std::string& file, const std::function<void(Json&)>& change) const {
    Json json = JsonOf(file);
    change(json);
    folder_.Write(file, json.dump());
}

ProgramResult MergeTest::Merge(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words = {"merge"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    ProgramSurroundings surroundings;
    surroundings.prepare = [this] {
        if (chdir(folder_.Path().c_str()) != 0) {
            _exit(1);
        }
    };
    return RunRig(words, surroundings);
}

std::string MergeTest::Refusal(int status, const std::vector<std::string>& parts) const {
    std::vector<std::string> arguments = parts;
    arguments.insert(arguments.end(), {"--out", "out"});
    const ProgramResult result = Merge(arguments);
    EXPECT_EQ(result.status, status) << result.output;
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
        EXPECT_FALSE(StartsWith(entry.path().filename().string(), "out")) << entry.path();
    }
    const std::string beginning = "velloran-rig merge: ";
    EXPECT_TRUE(StartsWith(result.errors, beginning)) << result.errors;
    return result.errors.substr(std::min(beginning.size(), result.errors.size()));
}

std::string MergeTest::TextOf(const std::string& file) const {
    return ReadFile(PathOf(file));
}

Json MergeTest::JsonOf(const std::string& file) const {
    Json json = Json::parse(TextOf(file), nullptr, false);
    EXPECT_FALSE(json.is_discarded()) << file;
    return json;
}

std::vector<std::string> Each(const Json& cases, const char* field) {
    std::vector<std::string> values;
    for (const Json& one : cases) {
        values.push_back(one.at(field));
    }
    return values;
}
