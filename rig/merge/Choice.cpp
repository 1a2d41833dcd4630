#include "rig/merge/Choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/campaign/evidence/RecordReader.h"
#include "rig/log/LogReader.h"

namespace rig::merge {
namespace {

using campaign::CaseRecord;

bool AreOne(const Part& one, const Part& other) {
    using Json = nlohmann::ordered_json;
    const std::vector<const char*> fields = {"begin", "commandLine", "workingDirectory", "versions", "shard"};
    return std::all_of(fields.begin(), fields.end(), [&](const char* field) {
        return one.json.value(field, Json()) == other.json.value(field, Json());
    });
}

bool CountsMore(const CaseRecord& one, const CaseRecord& other) {
    return std::pair(campaign::IsOver(one.outcome), one.outcome) >
           std::pair(campaign::IsOver(other.outcome), other.outcome);
}

}  // namespace

void RefuseTwice(const std::vector<Part>& parts) {
    for (std::size_t at = 0; at < parts.size(); ++at) {
        for (std::size_t before = 0; before < at; ++before) {
            if (AreOne(parts[before], parts[at])) {
                throw log::Unreadable(fmt::format("{}: expected each campaign once, found the same as in {}",
                                                  Printable(parts[at].folder),
                                                  Printable(parts[before].folder)));
            }
        }
    }
}

std::vector<std::string> OrderOf(const std::vector<Part>& parts) {
    std::vector<std::string> order;
    for (const Part& part : parts) {
        auto place = order.end();
        for (auto id = part.planned.rbegin(); id != part.planned.rend(); ++id) {
            const auto known = std::find(order.begin(), order.end(), *id);
            place = known == order.end() ? order.insert(place, *id) : known;
        }
    }
    return order;
}

std::optional<std::size_t> ChosenOf(const std::vector<Part>& parts, const std::string& id) {
    std::optional<std::size_t> chosen;
    for (std::size_t at = 0; at < parts.size(); ++at) {
        const CaseRecord* const record = parts[at].Find(id);
        if (record != nullptr && (!chosen || CountsMore(*record, *parts[*chosen].Find(id)))) {
            chosen = at;
        }
    }
    return chosen;
}

}  // namespace rig::merge
