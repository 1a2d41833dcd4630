#include "rig/result/Result.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace rig::result {
namespace {

constexpr std::int64_t kMicroseconds = 1'000'000;  // in a second

}  // namespace

bool NeedsWords(Verdict verdict) {
    return verdict != Verdict::Pass && verdict != Verdict::NotReached;
}

const char* NameOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "PASS";
        case Verdict::Warning:
            return "WARNING";
        case Verdict::KnownFailure:
            return "KNOWN FAILURE";
        case Verdict::NotReached:
            return "NOT REACHED";
        case Verdict::Inconclusive:
            return "INCONCLUSIVE";
        case Verdict::Environment:
            return "ENVIRONMENT";
        case Verdict::Fail:
            break;
    }
    return "FAIL";
}

std::string Evidence::Words() const {
    return fmt::format("{}:{}: {}{}", file, line, text, note.empty() ? "" : "  (" + note + ")");
}

std::string_view LastingId(const std::string& id) {
    static std::set<std::string> ids;
    return *ids.insert(id).first;
}

std::string_view WithoutDetails(std::string_view found) {
    const std::size_t parenthesis = found.find(" (");  // a later one may be part of a name
    return !found.empty() && found.back() == ')' ? found.substr(0, parenthesis) : found;
}

Verdict WorstOf(const RunResult& run) {
    Verdict worst = Verdict::Pass;
    bool isKnown = false;
    for (const CheckResult& check : run.checks) {
        worst = std::max(worst, check.verdict);
        isKnown = isKnown || check.verdict == Verdict::KnownFailure;
    }
    return worst == Verdict::NotReached && isKnown ? Verdict::KnownFailure : worst;
}

Verdict WorstOf(const Result& result) {
    Verdict worst = Verdict::Pass;
    for (const RunResult& run : result.runs) {
        worst = std::max(worst, WorstOf(run));
    }
    return worst;
}

int ExitStatusOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
        case Verdict::Warning:
        case Verdict::KnownFailure:
            return 0;
        case Verdict::NotReached:
        case Verdict::Inconclusive:
            return 2;
        case Verdict::Environment:
            return 3;
        case Verdict::Fail:
            break;
    }
    return 1;
}

std::string SecondsSince(const std::optional<std::int64_t>& begin, const std::optional<std::int64_t>& time) {
    return begin && time ? fmt::format("{:.3f}", static_cast<double>(*time - *begin) / kMicroseconds) : "";
}

std::string Date(std::int64_t time) {
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(time / kMicroseconds)));
}

}  // namespace rig::result
