#include "rig/diff/Reports.h"
#include "rig/result/Json.h"

namespace rig::diff {
namespace {

using result::Json;

Json ToJson(const Campaign& campaign) {
    return {{"folder", campaign.folder},
            {"state", campaign.state},
            {"note", campaign.note},
            {"begin", campaign.begin}};
}

Json ToJson(const std::vector<Difference>& differences) {
    Json array = Json::array();
    for (const Difference& difference : differences) {
        array.push_back({{"change", NameOf(difference.change)},
                         {"subject", difference.subject},
                         {"before", difference.before},
                         {"now", difference.after}});
    }
    return array;
}

Json ToJson(const CaseComparison& one) {
    return {{"name", one.name},
            {"switches", one.switches},
            {"change", NameOf(one.change)},
            {"differences", ToJson(one.differences)}};
}

}  // namespace

std::string DiffJson(const Comparison& comparison) {
    Json counts = Json::object();
    for (const Change change : {Change::Worse, Change::Better, Change::Changed, Change::Same}) {
        counts[NameOf(change)] = comparison.Count(change);
    }
    Json cases = Json::array();
    for (const CaseComparison& one : comparison.cases) {
        cases.push_back(ToJson(one));
    }
    const Json json = {{"before", ToJson(*comparison.before)},
                       {"now", ToJson(*comparison.after)},
                       {"surroundings", ToJson(comparison.surroundings)},
                       {"counts", std::move(counts)},
                       {"cases", std::move(cases)}};
    return result::Print(json);
}

}  // namespace rig::diff
