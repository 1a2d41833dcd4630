#pragma once

#include <string>
#include <vector>

#include "rig/diff/CampaignReader.h"

namespace rig::diff {

/// How something changed. Of several changes, the last in this order decides for all.
enum class Change { Same, Changed, Better, Worse };

/// @return as reports print it: "worse"
const char* NameOf(Change change);

/// One thing that is different now.
struct Difference {
    Change change = Change::Changed;
    std::string subject;  // "check event-list.source", "messages", "FILE_COMPLETE of the DVR" ...
    std::string before;
    std::string after;
};

struct CaseComparison {
    std::string name;
    std::string switches;
    Change change = Change::Same;  // the deciding one of its differences
    std::vector<Difference> differences;
    const Case* before = nullptr;  // null if the campaign has no such case
    const Case* after = nullptr;
};

/// What changed from one campaign to another. It points into both, which must outlive it.
struct Comparison {
    const Campaign* before = nullptr;
    const Campaign* after = nullptr;
    std::vector<Difference> surroundings;  // versions and the like: if they differ, not only the DVR changed
    std::vector<CaseComparison> cases;     // in the order of the later campaign, then those it lacks

    std::size_t Count(Change change) const;

    /// @return "1 case worse, 2 better, 0 changed, 22 the same"
    std::string Words() const;
};

/// Compares outcomes, verdicts, order and number of messages, and reaction times, case by case.
Comparison Compare(const Campaign& before, const Campaign& after);

/// Adds the first message at which the dialogues diverge, and the messages that come more or less often: a
/// DVR that tries again, for instance. Both are "changed": the checks say whether they are allowed. What
/// differs between the runs of one campaign is not a change.
void CompareMessages(const Case& before, const Case& after, std::vector<Difference>& differences);

/// Adds the requests to which the DVR reacts more slowly (worse) or faster (better), beyond the spread: the
/// medians of all later runs lie above what 95 of 100 reactions took before, or the other way round, by more
/// than a fifth and more than 20 ms.
void CompareReactions(const Case& before, const Case& after, std::vector<Difference>& differences);

/// The rule for verdicts and outcomes: to pass now is better, no longer to pass or to fail now is worse, any
/// other change is neither.
Change ChangeOf(const std::string& before, const std::string& after);

}  // namespace rig::diff
