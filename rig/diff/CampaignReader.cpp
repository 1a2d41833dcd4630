#include "rig/diff/CampaignReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>

#include "rig/base/Printable.h"
#include "rig/diff/Severity.h"
#include "rig/log/LogReader.h"

namespace rig::diff {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;  // of campaign.json, see doc/campaign.md
constexpr const char* kRecord = "the record of a campaign (format 1)";
constexpr const char* kCaseVerdict = "a case's verdict";

[[noreturn]] void Refuse(const std::string& path, const std::string& expected, const std::string& found) {
    throw log::Unreadable(fmt::format("{}: expected {}, found {}", Printable(path), expected, found));
}

std::string ReadFile(const std::string& path, const std::string& expected) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    if (!file || !(content << file.rdbuf())) {
        Refuse(path, expected, errno == 0 ? "nothing" : std::strerror(errno));
    }
    return content.str();
}

/// Passes a file's text on as JSON. Refuses what is not JSON, or not the JSON that `take` looks for.
template <typename Take>
void TakeJson(const std::string& path, const std::string& text, const std::string& expected,
              const Take& take) {
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

CaseRun RunIn(const std::string& campaign, const Json& json, Depth depth) {
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
    if (depth == Depth::Dialogues && has("verdict.json")) {
        const std::string path = campaign + "/" + run.folder + "/verdict.json";
        TakeJson(path, ReadFile(path, kCaseVerdict), kCaseVerdict,
                 [&run](const Json& verdict) { TakeDialogue(verdict, run); });
    }
    return run;
}

void TakeCase(const Json& json, Depth depth, Campaign& campaign) {
    const auto name = json.at("name").get<std::string>();
    auto place = std::find_if(campaign.cases.begin(), campaign.cases.end(),
                              [&name](const Case& one) { return one.name == name; });
    if (place == campaign.cases.end()) {
        place = campaign.cases.insert(place, {name, json.at("switches"), {}});
    }
    place->runs.push_back(RunIn(campaign.folder, json, depth));
}

/// @return the value of that name; null if there is none
const Json* ValueIn(const Json& json, const char* name) {
    const auto place = json.find(name);
    return place != json.end() && !place->is_null() ? &*place : nullptr;
}

/// A merged campaign has no seed if those of its parts differ.
std::uint32_t SeedIn(const Json& json) {
    const Json* const seed = ValueIn(json, "seed");
    return seed ? seed->get<std::uint32_t>() : 0;
}

/// What only parts and merged campaigns have.
void TakeParts(const Json& json, Campaign& campaign) {
    if (const Json* const shard = ValueIn(json, "shard")) {
        campaign.shard =
            fmt::format("{} of {}", shard->at("index").get<int>(), shard->at("total").get<int>());
    }
    if (const Json* const merged = ValueIn(json, "merged")) {
        for (const Json& part : merged->at("parts")) {
            campaign.parts.push_back({part.at("begin"), SeedIn(part), part.at("note")});
        }
    }
}

void TakeRecord(const Json& json, Depth depth, Campaign& campaign) {
    if (json.at("format") != kFormat) {
        throw Json::other_error::create(501, "format " + json.at("format").dump(), &json);
    }
    campaign.state = json.at("state");
    campaign.note = json.at("note");
    campaign.begin = json.at("begin");
    campaign.seed = SeedIn(json);
    campaign.versions = json.at("versions").get<std::map<std::string, std::string>>();
    for (const Json& one : json.at("cases")) {
        TakeCase(one, depth, campaign);
    }
    TakeParts(json, campaign);
}

}  // namespace

Campaign ReadCampaign(const std::string& folder, Depth depth) {
    Campaign campaign;
    campaign.folder = folder;
    const std::string path = folder + "/campaign.json";
    const std::string text = ReadFile(path, kRecord);
    TakeJson(path, text, kRecord,
             [depth, &campaign](const Json& json) { TakeRecord(json, depth, campaign); });
    if (campaign.cases.empty()) {
        Refuse(path, "at least one case", "none");
    }
    campaign.fingerprint = std::hash<std::string>()(text);
    return campaign;
}

}  // namespace rig::diff
