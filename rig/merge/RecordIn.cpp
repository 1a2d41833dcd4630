#include "rig/merge/RecordIn.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "rig/base/Affix.h"
#include "rig/base/Printable.h"
#include "rig/campaign/Cases.h"
#include "rig/campaign/Search.h"

namespace rig::merge {
namespace {

using campaign::CampaignRecord;
using campaign::Case;
using campaign::CaseRecord;
using Json = nlohmann::ordered_json;
using Pairs = std::vector<std::pair<std::string, std::string>>;

template <typename Value>
std::optional<Value> Maybe(const Json& json) {
    return json.is_null() ? std::optional<Value>() : json.get<Value>();
}

Pairs PairsIn(const Json& json) {
    if (!json.is_object()) {
        throw std::runtime_error(json.dump());
    }
    Pairs pairs;
    for (const auto& [name, value] : json.items()) {
        pairs.emplace_back(name, value);
    }
    return pairs;
}

std::string PlainName(const Json& json) {
    auto name = json.get<std::string>();
    if (!IsPlainName(name)) {
        throw std::runtime_error("the name " + Quoted(name));
    }
    return name;
}

CaseRecord PlannedIn(const Json& json) {
    CaseRecord record;
    record.id = PlainName(json.at("id"));
    if (json.at("folder") != record.Folder()) {
        throw std::runtime_error("the folder " + Quoted(json.at("folder").get<std::string>()));
    }
    const std::string name = PlainName(json.at("name"));
    const std::string role = json.at("role");
    record.plan = PlanOf(name);
    record.plan.protocol = json.at("protocol");
    record.plan.switches = json.at("switches");
    record.plan.sentence = json.at("sentence");
    record.plan.role = role == "first"  ? Case::Role::First
                       : role == "last" ? Case::Role::Last
                                        : Case::Role::Fault;
    record.run = json.at("run");
    return record;
}

void TakeOptions(const Json& json, CampaignRecord& record) {
    record.repeat = json.at("repeat");
    record.patience = {json.at("connectTimeout"), json.at("idleTimeout"), json.at("transferTimeout"),
                       json.at("caseTimeout"), json.at("patience")};
    record.maxReaction = Maybe<double>(json.at("maxReaction"));
    record.linger = Maybe<double>(json.at("linger"));
    record.isStrict = json.at("strict");
    record.isDirect = json.at("direct");
}

std::optional<campaign::ShardRecord> ShardIn(const Json& json) {
    if (json.is_null()) {
        return std::nullopt;
    }
    campaign::ShardRecord shard{
        {json.at("index"), json.at("total"), json.at("from")}, {}, json.at("knownUnseen")};
    for (const Json& id : json.at("cases")) {
        shard.cases.push_back(PlainName(id));
    }
    return shard;
}

}  // namespace

bool IsPlainName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

Case PlanOf(const std::string& name) {
    Case plan;
    plan.name = name;
    plan.protocol = EndsWith(name, "-1.0") ? 1 : 2;
    const std::vector<Case>& all = campaign::AllCases();
    const auto known =
        std::find_if(all.begin(), all.end(), [&name](const Case& one) { return one.name == name; });
    if (known != all.end()) {
        return *known;
    }
    try {
        return name.find('@') == std::string::npos ? plan : campaign::CaseOf(campaign::SequenceOf(name));
    } catch (const std::exception&) {
        return plan;
    }
}

CampaignRecord RecordIn(const Json& json) {
    CampaignRecord record;
    record.state = json.at("state");
    record.commandLine = json.at("commandLine").get<std::vector<std::string>>();
    record.workingDirectory = json.at("workingDirectory");
    record.versions = PairsIn(json.at("versions"));
    record.commands = PairsIn(json.at("commands"));
    record.note = json.at("note");
    record.seed = json.at("seed");
    TakeOptions(json.at("options"), record);
    record.begin = json.at("begin");
    record.end = Maybe<std::int64_t>(json.at("end"));
    record.knownUnseen = json.at("knownUnseen").get<std::vector<std::string>>();
    record.shard = ShardIn(json.value("shard", Json()));
    for (const Json& one : json.at("cases")) {
        record.cases.push_back(PlannedIn(one));
    }
    return record;
}

}  // namespace rig::merge
