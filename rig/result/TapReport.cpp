#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Append.h"
#include "rig/result/Reports.h"

namespace rig::result {
namespace {

/// @return the text without characters that mean something in TAP
std::string Plain(std::string text) {
    std::replace(text.begin(), text.end(), '#', ' ');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

std::string TapReport(const Result& result) {
    std::string tests;
    std::size_t number = 0;
    for (const RunResult& run : result.runs) {
        for (const CheckResult& check : run.checks) {
            const bool isKnown = check.verdict == Verdict::KnownFailure;
            const bool isOk = check.verdict == Verdict::Pass || check.verdict == Verdict::Warning;
            Append(tests, "{} {} - {} {}{}\n", isOk ? "ok" : "not ok", ++number, Plain(run.name), check.id,
                   isKnown ? " # TODO known failure" : "");
            if (check.verdict != Verdict::Pass) {
                Append(tests, "# {}: expected {}, found {}\n", NameOf(check.verdict), Plain(check.expected),
                       Plain(check.found));
            }
        }
    }
    return fmt::format("TAP version 13\n1..{}\n{}", number, tests);
}

}  // namespace rig::result
