#include "rig/merge/Choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <tuple>
#include <utility>

#include "rig/base/Printable.h"
#include "rig/campaign/evidence/RecordReader.h"
#include "rig/log/LogReader.h"

namespace rig::merge {
namespace {

using campaign::CaseRecord;

bool AreOne(const Part& one, const Part& other) {
    const auto identity = [](const Part& part) {
        const campaign::CampaignRecord& record = part.record;
        const std::uint32_t index = record.shard ? record.shard->part.index : 0;
        return std::tuple(record.begin, record.commandLine, record.workingDirectory, index,
                          part.json.at("versions").value("host", ""));
    };
    return identity(one) == identity(other);
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

std::vector<std::string> Interleaved(const std::vector<std::vector<std::string>>& lists) {
    std::vector<std::string> all;
    for (const std::vector<std::string>& list : lists) {
        auto place = all.end();
        for (auto one = list.rbegin(); one != list.rend(); ++one) {
            const auto known = std::find(all.begin(), all.end(), *one);
            place = known == all.end() ? all.insert(place, *one) : known;
        }
    }
    return all;
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
