#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rig/judge/Run.h"

namespace rig::judge {

/// What the judge is told beside the log.
struct Limits {
    double patience = 3;  // seconds after which a request without an answer counts as unanswered
    std::optional<double> maxReaction;  // milliseconds
};

/// The verdict of one check, with what was expected and found.
struct Finding {
    report::Verdict verdict = report::Verdict::NotReached;
    std::string expected;
    std::string found;
    std::vector<report::Evidence> evidence;
};

/// One thing that is required of the DVR. To add a check, add a row to the table in Checks.cpp, and its test.
struct Check {
    const char* id;           // stable: users write it into their lists
    const char* requirement;  // one sentence
    bool (*applies)(const Run& run);
    Finding (*judge)(const Run& run, const Limits& limits);
};

/// @return all checks, in the order in which reports show them
const std::vector<Check>& AllChecks();

/// Applies to the run all checks that concern it.
std::vector<report::CheckResult> JudgeRun(const Run& run, const Limits& limits);

}  // namespace rig::judge
