#include "rig/diff/Reactions.h"

#include <fmt/format.h>

#include <algorithm>

namespace rig::diff {
namespace {

constexpr double kLeastFactor = 1.2;
constexpr double kLeastMilliseconds = 20;

}  // namespace

void Span::Add(const Span& other) {
    typical = std::min(typical, other.typical);
    most = std::max(most, other.most);
}

std::string Span::Words() const {
    return fmt::format("{:.1f} to {:.1f} ms", typical, most);
}

std::map<std::string, Span> SpansOf(const Case& all) {
    std::map<std::string, Span> spans;
    for (const CaseRun& run : all.runs) {
        for (const auto& [request, reaction] : run.reactions) {
            const Span span{reaction.median, reaction.percentile95};
            spans.try_emplace(request, span).first->second.Add(span);
        }
    }
    return spans;
}

bool IsSlower(const Span& later, const Span& earlier) {
    return later.typical > earlier.most * kLeastFactor && later.typical > earlier.most + kLeastMilliseconds;
}

}  // namespace rig::diff
