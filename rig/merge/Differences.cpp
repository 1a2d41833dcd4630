#include "rig/merge/Differences.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/merge/Choice.h"

namespace rig::merge {
namespace {

using Json = nlohmann::ordered_json;

/// What is known of one part, by name, in the order in which it matters.
using Facts = std::vector<std::pair<std::string, std::string>>;

std::string TextOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void AddAll(Facts& facts, const Json& object, const std::string& kind) {
    for (const auto& [name, value] : object.items()) {
        facts.emplace_back(kind + name, TextOf(value));
    }
}

Facts FactsOf(const Part& part) {
    const Json& json = part.json;
    const Json& versions = json.at("versions");
    Facts facts = {{"harness", versions.value("harnessSha256", "")},
                   {"note", TextOf(json.at("note"))},
                   {"velloran-rig", versions.value("velloran-rig", "")}};
    const auto& shard = part.record.shard;
    facts.emplace_back("number of shards", shard ? std::to_string(shard->part.total) : "");
    AddAll(facts, json.at("options"), "option ");
    AddAll(facts, json.at("commands"), "command ");
    facts.emplace_back("seed", json.at("seed").dump());
    for (const auto& [name, value] : versions.items()) {
        if (name != "harnessSha256" && name != "velloran-rig") {
            facts.emplace_back(name, TextOf(value));
        }
    }
    return facts;
}

std::string ValueOf(const Facts& facts, const std::string& name) {
    const auto found =
        std::find_if(facts.begin(), facts.end(), [&name](const auto& fact) { return fact.first == name; });
    return found == facts.end() ? "" : found->second;
}

/// @return the names of all facts, each once
std::vector<std::string> NamesOf(const std::vector<Facts>& all) {
    std::vector<std::vector<std::string>> names(all.size());
    for (std::size_t at = 0; at < all.size(); ++at) {
        for (const auto& [name, value] : all[at]) {
            names[at].push_back(name);
        }
    }
    return Interleaved(names);
}

/// Who has which value, in the order of the parts.
class Values {
 public:
    void Add(const std::string& value, const Part& part) {
        const auto found = std::find_if(values_.begin(), values_.end(),
                                        [&value](const auto& one) { return one.first == value; });
        auto& folders = found == values_.end()
                            ? values_.emplace_back(value, std::vector<std::string>()).second
                            : found->second;
        folders.push_back(Printable(part.folder));
    }

    bool Differ() const { return values_.size() > 1; }

    /// @return "'4.1' in a, b; '4.2' in c"
    std::string Words() const {
        std::vector<std::string> words;
        for (const auto& [value, folders] : values_) {
            words.push_back(
                fmt::format("{} in {}", value.empty() ? "none" : Quoted(value), fmt::join(folders, ", ")));
        }
        return fmt::format("{}", fmt::join(words, "; "));
    }

 private:
    std::vector<std::pair<std::string, std::vector<std::string>>> values_;
};

void AddIfDiffers(std::vector<std::string>& differences, const std::string& name, const Values& values) {
    if (values.Differ()) {
        differences.push_back(fmt::format("{}: {}", name, values.Words()));
    }
}

/// A version of the program may have another case under the same name.
void AddSwitches(std::vector<std::string>& differences, const std::vector<Part>& parts) {
    std::vector<std::string> ids;
    std::map<std::string, Values> switches;
    for (const Part& part : parts) {
        for (const campaign::CaseRecord& one : part.record.cases) {
            if (switches.count(one.id) == 0) {
                ids.push_back(one.id);
            }
            switches[one.id].Add(one.plan.switches, part);
        }
    }
    for (const std::string& id : ids) {
        AddIfDiffers(differences, "switches of " + Printable(id), switches[id]);
    }
}

/// Shards of two campaigns do not make one.
void AddPlans(std::vector<std::string>& differences, const std::vector<Part>& parts) {
    const Part* first = nullptr;
    for (const Part& part : parts) {
        if (!part.record.shard) {
            continue;
        }
        if (first != nullptr && part.planned != first->planned) {
            differences.push_back(fmt::format("cases of all shards: other ones in {} than in {}",
                                              Printable(part.folder), Printable(first->folder)));
        }
        first = first == nullptr ? &part : first;
    }
}

}  // namespace

std::vector<std::string> DifferencesOf(const std::vector<Part>& parts) {
    std::vector<Facts> all;
    std::transform(parts.begin(), parts.end(), std::back_inserter(all), FactsOf);
    std::vector<std::string> differences;
    for (const std::string& name : NamesOf(all)) {
        Values values;
        for (std::size_t at = 0; at < parts.size(); ++at) {
            values.Add(ValueOf(all[at], name), parts[at]);
        }
        AddIfDiffers(differences, name, values);
    }
    AddSwitches(differences, parts);
    AddPlans(differences, parts);
    return differences;
}

}  // namespace rig::merge
