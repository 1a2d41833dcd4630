#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "rig/base/Printable.h"
#include "rig/campaign/Campaign.h"
#include "rig/campaign/Plan.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/evidence/RecordReader.h"

namespace rig::campaign {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

[[noreturn]] void Refuse(const std::string& what, const std::string& then, const std::string& now) {
    throw std::runtime_error(fmt::format("--resume: expected {} as when the campaign began, {}, found {}",
                                         what, Quoted(then), Quoted(now)));
}

/// The paths on a command line count from the folder in which it was given.
void ReturnTo(const std::string& folder) {
    std::error_code error;
    fs::current_path(folder, error);
    if (error) {
        throw std::runtime_error(
            fmt::format("--resume: expected the folder in which the campaign began, {}, found: {}",
                        Quoted(folder), error.message()));
    }
}

RunOptions OptionsOf(const Json& json) {
    ReturnTo(json.at("workingDirectory"));
    const auto words = json.at("commandLine").get<std::vector<std::string>>();
    const auto run = std::find(words.begin(), words.end(), "run");
    if (run == words.end()) {
        throw std::runtime_error("--resume: expected the command line of a campaign, found another");
    }
    RunOptions options = ParseRun({std::next(run), words.end()});
    if (!options.search.empty()) {
        throw std::runtime_error(
            "--resume: expected a campaign of cases, found a search, which its seed repeats");
    }
    return options;
}

void CheckVersions(const Json& then, const CampaignRecord& record) {
    for (const auto& [name, now] : record.versions) {
        const std::string before = then.at("versions").value(name, "");
        if ((name == "velloran-rig" || name == "harnessSha256") && before != now) {
            Refuse("the same " + name, before, now);
        }
    }
}

/// The part that a runner's environment named then, not the one that it names now.
std::optional<Shard> ShardIn(const Json& json) {
    const Json shard = json.value("shard", Json());
    return shard.is_null() ? std::optional<Shard>()
                           : Shard{shard.at("index"), shard.at("total"), shard.at("from")};
}

/// The names of cases belong to the program, which may be another one with the same version.
void CheckCases(const Json& then, const CampaignRecord& record) {
    const Json& cases = then.at("cases");
    if (cases.size() != record.cases.size()) {
        Refuse("as many cases", std::to_string(cases.size()), std::to_string(record.cases.size()));
    }
    for (std::size_t at = 0; at < cases.size(); ++at) {
        const std::string before = fmt::format("{} {}", cases[at].at("id").get<std::string>(),
                                               cases[at].at("switches").get<std::string>());
        const CaseRecord& planned = record.cases[at];
        const std::string now = planned.id + " " + planned.plan.switches;
        if (before != now) {
            Refuse("the same cases", before, now);
        }
    }
}

/// What a case has left that did not come to its end stays beside what it leaves now.
void KeepAttempt(const fs::path& folder) {
    if (!fs::exists(folder)) {
        return;
    }
    for (int attempt = 1;; ++attempt) {
        const fs::path kept = folder.string() + "~" + std::to_string(attempt);
        if (!fs::exists(kept)) {
            fs::rename(folder, kept);
            return;
        }
    }
}

/// Files that were being written when the campaign was killed: named as WriteWhole names them until they are
/// whole.
void RemoveHalfWritten(const fs::path& folder) {
    const std::regex halfWritten(R"((campaign\.json|index\.html|junit\.xml|campaign\.tap)\.\w{6})");
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (std::regex_match(entry.path().filename().string(), halfWritten)) {
            fs::remove(entry.path());
        }
    }
}

Json CampaignJsonIn(const std::string& folder) {
    std::ifstream file(folder + "/campaign.json", std::ios::binary);
    Json json = Json::parse(file, nullptr, false);
    if (!json.is_object() || json.value("format", 0) != kFormat) {
        throw std::runtime_error(fmt::format(
            "--resume: expected the folder of a campaign (format {}), found {}", kFormat, Quoted(folder)));
    }
    if (!json.value("merged", Json()).is_null()) {
        throw std::runtime_error("--resume: expected a campaign that ran, found several that were merged");
    }
    return json;
}

/// @return the campaign as it was planned; refuses one that is no longer the same
Planned PlanAgain(const std::string& folder) try {
    const Json json = CampaignJsonIn(folder);
    RunOptions begun = OptionsOf(json);
    begun.selection.shard = ShardIn(json);
    Planned planned = PlanOf(begun, json.at("seed"));
    CheckVersions(json, planned.record);
    CheckCases(json, planned.record);
    planned.record.commandLine = json.at("commandLine").get<std::vector<std::string>>();
    planned.record.begin = json.at("begin");
    return planned;
} catch (const Json::exception&) {
    throw std::runtime_error(fmt::format(
        "--resume: expected a campaign.json as this version writes it, found another in {}", Quoted(folder)));
}

}  // namespace

Outcome Resume(const RunOptions& options) {
    const std::string folder = fs::absolute(options.resume);
    Planned planned = PlanAgain(folder);
    const std::vector<CaseRecord> cases = planned.record.cases;
    Campaign campaign(std::move(planned.rig), folder, std::move(planned.record));
    RemoveHalfWritten(folder);
    for (std::size_t at = 0; at < cases.size(); ++at) {
        if (std::optional<FinishedCase> finished = ReadFinishedCase(folder, cases[at])) {
            campaign.Take(at, std::move(*finished));
        } else {
            KeepAttempt(folder + "/" + cases[at].Folder());
        }
    }
    return campaign.Run();
}

}  // namespace rig::campaign
