#include "rig/diff/Reactions.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>

namespace rig::diff {
namespace {

constexpr double kLeastFactor = 1.2;
constexpr double kLeastMilliseconds = 20;

/// What the runs of a case took for one request, milliseconds.
struct Span {
    double typical = 0;  // the least of the medians
    double most = 0;     // of the 95th percentiles

    std::string Words() const { return fmt::format("{:.1f} to {:.1f} ms", typical, most); }
};

std::map<std::string, Span> SpansOf(const Case& all) {
    std::map<std::string, Span> spans;
    for (const CaseRun& run : all.runs) {
        for (const auto& [request, reaction] : run.reactions) {
            const auto [place, isNew] =
                spans.try_emplace(request, Span{reaction.median, reaction.percentile95});
            place->second.typical = std::min(place->second.typical, reaction.median);
            place->second.most = std::max(place->second.most, reaction.percentile95);
        }
    }
    return spans;
}

bool IsBeyond(double later, double earlier) {
    return later > earlier * kLeastFactor && later > earlier + kLeastMilliseconds;
}

}  // namespace

void CompareReactions(const Case& before, const Case& after, std::vector<Difference>& differences) {
    const std::map<std::string, Span> spans = SpansOf(after);
    for (const auto& [request, was] : SpansOf(before)) {
        const auto place = spans.find(request);
        if (place == spans.end()) {
            continue;
        }
        const Span& is = place->second;
        const bool isSlower = IsBeyond(is.typical, was.most);
        if (isSlower || IsBeyond(was.typical, is.most)) {
            differences.push_back({isSlower ? Change::Worse : Change::Better, "reaction to " + request,
                                   was.Words(), is.Words()});
        }
    }
}

}  // namespace rig::diff
