#include "rig/judge/KnownFailures.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "rig/judge/Checks.h"
#include "rig/log/LogReader.h"

namespace rig::judge {
namespace {

using report::CheckResult;
using report::Verdict;

bool IsCheck(const std::string& id) {
    return std::any_of(AllChecks().begin(), AllChecks().end(),
                       [&id](const Check& check) { return id == check.id; });
}

/// @return the reason without what stands in parentheses at its end
std::string_view Stable(std::string_view reason) {
    const std::size_t parenthesis = reason.find(" (");  // a later one may be of a name
    return !reason.empty() && reason.back() == ')' ? reason.substr(0, parenthesis) : reason;
}

}  // namespace

KnownFailures ReadKnownFailures(const std::string& path) try {
    KnownFailures known;
    ReadLog(path, [&known, &path](std::uint64_t number, std::string_view line) {
        if (line.empty() || line.front() == '#') {
            return true;
        }
        const std::size_t blank = std::min(line.find(' '), line.size());
        const std::string id(line.substr(0, blank));
        const std::string reason(line.substr(std::min(blank + 1, line.size())));
        if (!IsCheck(id) || reason.empty()) {
            throw std::runtime_error(
                fmt::format("{}:{}: expected the id of a check, a blank and a reason, found "
                            "\"{}\"",
                            path, number, line));
        }
        known[id] = reason;
        return true;
    });
    return known;
} catch (const Unreadable& file) {
    throw std::runtime_error(file.what());
}

void Apply(const KnownFailures& known, report::RunResult& run) {
    for (CheckResult& check : run.checks) {
        const auto entry = known.find(check.id);
        if (entry == known.end()) {
            continue;
        }
        if (check.verdict == Verdict::Fail && Stable(check.found) == Stable(entry->second)) {
            check.verdict = Verdict::KnownFailure;
        } else if (check.verdict == Verdict::Pass) {
            check.verdict = Verdict::Fail;
            check.expected = "the known failure: " + entry->second;
            check.found = "it passes now: the list of known failures is to be mended";
        }
    }
}

}  // namespace rig::judge
