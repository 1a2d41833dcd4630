#include <fmt/format.h>

#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

bool HasReactions(const Run& run) {
    return !run.reactions.empty();
}

Finding Reaction(const Run& run, const Limits& limits) {
    const double limit = limits.maxReaction.value_or(0);
    const Text expected = fmt::format("every answer within {:.0f} ms", limit);
    if (!run.hasFractions) {
        return Inconclusive(expected, "the log's times are whole seconds");
    }
    for (const auto& [request, times] : run.reactions) {
        if (times.Longest() > limit) {
            Finding late = Fail(
                expected, fmt::format("a late answer to {} (after {:.1f} ms)", request, times.Longest()), {});
            late.evidence.Add(times.LongestAt());
            return late;
        }
    }
    return Pass(expected, fmt::format("none that took longer ({} more came while the harness paused)",
                                      run.hiddenReactions));
}

}  // namespace

const std::vector<Check>& TimingChecks() {
    static const std::vector<Check> kChecks = {
        {"reaction.time", "The DVR answers within the time given.",
         "the time from each request to its answer; only with --max-reaction", HasReactions, Reaction,
         Needs::MaxReaction},
    };
    return kChecks;
}

}  // namespace rig::judge
