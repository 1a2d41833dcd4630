#include "rig/diff/CampaignReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "rig/base/Printable.h"
#include "rig/diff/Severity.h"
#include "rig/log/LogReader.h"

namespace rig::diff {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;  // of campaign.json, see doc/campaign.md

[[noreturn]] void Refuse(const std::string& path, const std::string& expected, const std::string& found) {
    throw log::Unreadable(fmt::format("{}: expected {}, found {}", path, expected, found));
}

std::string ReadFile(const std::string& path, const std::string& expected) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (!file || !(content << file.rdbuf())) {
        Refuse(path, expected, errno == 0 ? "nothing" : std::strerror(errno));
    }
    return content.str();
}

/// Reads a file and passes its content on as JSON. Refuses what is not JSON, or not the JSON that `take`
/// looks for.
template <typename Take>
void TakeJson(const std::string& path, const std::string& expected, const Take& take) {
    errno = 0;
    const std::string text = ReadFile(path, expected);
    try {
        take(Json::parse(text));
    } catch (const Json::exception& error) {
        Refuse(path, expected, Printable(error.what()));
    }
}

/// A verdict or an outcome that the rules know.
std::string VerdictIn(const Json& json) {
    auto name = json.get<std::string>();
    if (!IsKnown(name)) {
        throw Json::other_error::create(501, fmt::format("the verdict \"{}\"", name), &json);
    }
    return name;
}

void TakeReactions(const Json& timings, CaseRun& run) {
    for (const Json& timing : timings) {
        run.reactions[timing.at("request")] = {timing.at("median"), timing.at("percentile95")};
    }
}

/// The messages of the dialogue, without what they are about: two DVRs need not have the same recordings.
void TakeDialogue(const Json& verdict, CaseRun& run) {
    for (const Json& judged : verdict.at("runs")) {
        for (const Json& step : judged.at("steps")) {
            const auto kind = step.at("kind").get<std::string>();
            const auto text = step.at("text").get<std::string>();
            if (kind == "dvr" || kind == "harness") {
                run.messages.push_back((kind == "dvr" ? "DVR " : "harness ") +
                                       text.substr(0, text.find(' ')));
            }
        }
    }
}

CaseRun RunIn(const std::string& campaign, const Json& json) {
    CaseRun run;
    run.folder = json.at("folder");
    run.outcome = VerdictIn(json.at("outcome"));
    run.reason = json.at("reason");
    for (const Json& check : json.at("checks")) {
        run.checks.emplace_back(check.at("id"), Check{VerdictIn(check.at("verdict")), check.at("found")});
    }
    TakeReactions(json.at("timings"), run);
    const auto files = json.at("files").get<std::vector<std::string>>();
    const auto has = [&files](const char* name) {
        return std::find(files.begin(), files.end(), name) != files.end();
    };
    run.hasPage = has("report.html");
    if (has("verdict.json")) {
        TakeJson(campaign + "/" + run.folder + "/verdict.json", "a case's verdict",
                 [&run](const Json& verdict) { TakeDialogue(verdict, run); });
    }
    return run;
}

void TakeCase(const Json& json, Campaign& campaign) {
    const auto name = json.at("name").get<std::string>();
    auto place = std::find_if(campaign.cases.begin(), campaign.cases.end(),
                              [&name](const Case& one) { return one.name == name; });
    if (place == campaign.cases.end()) {
        place = campaign.cases.insert(place, {name, json.at("switches"), {}});
    }
    place->runs.push_back(RunIn(campaign.folder, json));
}

/// @return which part of a campaign it is, in words
std::string PartIn(const Json& json) {
    const Json shard = json.value("shard", Json());
    return shard.is_null() ? "the whole"
                           : fmt::format("{} of {}", shard.at("index").dump(), shard.at("total").dump());
}

void TakeRecord(const Json& json, Campaign& campaign) {
    if (json.at("format") != kFormat) {
        throw Json::other_error::create(501, "format " + json.at("format").dump(), &json);
    }
    campaign.state = json.at("state");
    campaign.note = json.at("note");
    campaign.begin = json.at("begin");
    campaign.versions = json.at("versions").get<std::map<std::string, std::string>>();
    campaign.versions["part"] = PartIn(json);
    for (const Json& one : json.at("cases")) {
        TakeCase(one, campaign);
    }
}

}  // namespace

Campaign ReadCampaign(const std::string& folder) {
    Campaign campaign;
    campaign.folder = folder;
    TakeJson(folder + "/campaign.json", "the record of a campaign (format 1)",
             [&campaign](const Json& json) { TakeRecord(json, campaign); });
    if (campaign.cases.empty()) {
        Refuse(folder + "/campaign.json", "at least one case", "none");
    }
    return campaign;
}

}  // namespace rig::diff
