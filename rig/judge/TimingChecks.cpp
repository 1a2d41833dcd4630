#include <fmt/format.h>

#include "rig/judge/Checks.h"
#include "rig/judge/Findings.h"

namespace rig::judge {
namespace {

bool HasReactions(const Run& run) {
    return !run.reactions.empty();
}

Finding Reaction(const Run& run, const Limits& limits) {
    const double limit = limits.maxReaction.value_or(0);
    const std::string expected = fmt::format("every answer within {:.0f} ms", limit);
    for (const auto& [request, times] : run.reactions) {
        if (times.Longest() > limit) {
            return Fail(expected, fmt::format("{:.0f} ms for the answer to {}", times.Longest(), request),
                        {});
        }
    }
    return Pass(expected, "no answer took longer");
}

}  // namespace

const std::vector<Check>& TimingChecks() {
    static const std::vector<Check> kChecks = {
        {"reaction.time", "The DVR answers within the time given.", HasReactions, Reaction, true},
    };
    return kChecks;
}

}  // namespace rig::judge
