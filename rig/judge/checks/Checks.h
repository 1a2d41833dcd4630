#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rig/base/Listing.h"
#include "rig/judge/Run.h"
#include "rig/judge/Text.h"
#include "rig/judge/delivery/DeliveryPlace.h"

namespace rig::judge {

/// What the rig saw of the DVR after DONE, which the harness does not log, by the rig's own clock.
struct AfterDone {
    std::optional<double> calledAfter;  // seconds until the DVR connected again, to this run or the next
    double watchedFor = 0;              // seconds for which the rig saw that it did not
};

/// What the judge is told besides the log.
struct Limits {
    double patience = 3;  // seconds after which a request without an answer counts as unanswered
    std::optional<double> maxReaction;  // milliseconds
    bool isStrict = false;              // a warning fails, too
    AfterDone after = {};
    std::optional<DeliveryPlace> delivered = std::nullopt;  // where to look for the files
    std::optional<std::string> proxy = std::nullopt;        // the proxy's log
};

/// The verdict of one check, with what was expected and found.
struct Finding {
    Finding() = default;
    /// As an aggregate it would be cleared before it is filled, for each check of each run.
    Finding(result::Verdict given, Text wanted, Text seen, Proof proof)
        : verdict(given), expected(std::move(wanted)), found(std::move(seen)), evidence(std::move(proof)) {}

    result::Verdict verdict = result::Verdict::NotReached;
    Text expected;
    Text found;
    Proof evidence;
};

/// What a check needs besides a run that it concerns.
enum class Needs {
    Nothing,
    WholeLog,     // a failure follows from everything before it, so an incomplete log proves none
    OwnReading,   // a failure follows from what the judge, and not the harness, reads out of a message
    MaxReaction,  // left out unless the user gives a limit
    Delivered,    // left out unless the user names the folder of the delivered files
    Wire,         // left out unless the user names the proxy's log
    WireTimes     // left out unless the user names that and gives a limit
};

/// One thing that is required of the DVR. To add a check, add its function, a row in the table of one of the
/// *Checks.cpp files, and its test.
struct Check {
    const char* id;           // stable: users write it into their lists
    const char* requirement;  // one sentence
    const char* proof;        // what in the log decides it
    bool (*applies)(const Run& run);
    Finding (*judge)(const Run& run, const Limits& limits);
    Needs needs = Needs::Nothing;
};

// The tables, by subject.
const std::vector<Check>& ConnectionChecks();
const std::vector<Check>& MessageChecks();
const std::vector<Check>& ExportChecks();
// Two for each switch: the fault was injected, the DVR reacted as it must.
const std::vector<Check>& FaultChecks();   // -e -f -t -r -x -s
const std::vector<Check>& SwitchChecks();  // -u -g -z -c -d
const std::vector<Check>& TimingChecks();
const std::vector<Check>& DeliveryChecks();  // what is not in the log
const std::vector<Check>& WireChecks();      // what is in the proxy's

/// @return whether the check is left out unless the user asks for it
bool IsOptional(const Check& check);

/// @return all checks, in the order in which reports show them
const std::vector<Check>& AllChecks();

/// @return the checks for --list-checks and the documentation
Listing ListChecks();

/// Applies all checks that concern the run.
/// @param words  whether to say of each what was expected and found, not only of those that reports explain
std::vector<result::CheckResult> JudgeRun(const Run& run, const Limits& limits, bool words);

}  // namespace rig::judge
