#include "rig/judge/KnownFailures.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>

#include "rig/base/Printable.h"
#include "rig/judge/checks/Checks.h"
#include "rig/log/LogReader.h"

namespace rig::judge {
namespace {

using result::CheckResult;
using result::Verdict;

bool IsCheck(const std::string& id) {
    return std::any_of(AllChecks().begin(), AllChecks().end(),
                       [&id](const Check& check) { return id == check.id; });
}

bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\r';
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool Has(const std::set<std::string>& reasons, const std::string& found) {
    return std::any_of(reasons.begin(), reasons.end(), [&found](const std::string& reason) {
        return result::WithoutDetails(reason) == result::WithoutDetails(found);
    });
}

}  // namespace

KnownFailures ReadKnownFailures(const std::string& path) try {
    KnownFailures known;
    log::ReadLog(path, [&known, &path](std::uint64_t number, std::string_view line) {
        const std::string_view entry = Trimmed(line);
        if (entry.empty() || entry.front() == '#') {
            return;
        }
        const std::string_view id = entry.substr(0, entry.find_first_of(" \t"));
        const std::string_view reason = Trimmed(entry.substr(id.size()));
        if (!IsCheck(std::string(id)) || reason.empty()) {
            throw std::runtime_error(
                fmt::format("{}:{}: expected the id of a check, a blank and a reason, found \"{}\"",
                            Printable(path), number, WithoutControls(line)));
        }
        known[std::string(id)].insert(std::string(reason));
    });
    return known;
} catch (const log::Unreadable& file) {
    throw std::runtime_error(std::string("--known: ") + file.what());
}

void Apply(const KnownFailures& known, result::RunResult& run) {
    for (CheckResult& check : run.checks) {
        const auto entry = known.find(std::string(check.id));
        if (entry == known.end() || check.verdict != Verdict::Fail) {
            continue;
        }
        if (Has(entry->second, check.found)) {
            check.verdict = Verdict::KnownFailure;
        } else {
            check.expected += fmt::format("; known is \"{}\"", fmt::join(entry->second, "\", \""));
        }
    }
}

void KnownTally::Add(const result::RunResult& run) {
    for (const CheckResult& check : run.checks) {
        if (check.verdict == Verdict::Pass) {
            passed_.emplace(check.id);
        } else if (check.verdict == Verdict::KnownFailure || check.verdict == Verdict::Warning) {
            shown_.emplace(check.id);
        }
    }
}

result::RunResult KnownTally::Unseen(const KnownFailures& known) const {
    result::RunResult run;
    run.name = "known failures";
    for (const auto& [id, reasons] : known) {
        if (passed_.count(id) > 0 && shown_.count(id) == 0) {
            run.checks.push_back({result::LastingId(id),
                                  "A known failure occurs, or is removed from the list.",
                                  Verdict::Fail,
                                  fmt::format("\"{}\"", fmt::join(reasons, "\" or \"")),
                                  "it passes now: the list of known failures must be fixed",
                                  {}});
        }
    }
    return run;
}

}  // namespace rig::judge
