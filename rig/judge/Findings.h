#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "rig/judge/checks/Checks.h"

namespace rig::judge {

// When a check applies.
bool Always(const Run& run);
bool IsExport(const Run& run);  // not with -g, which asks for nothing, nor with -z, which cannot get far
bool IsSecondDialect(const Run& run);  // an export in 2.0
bool AsksWhole(const Run& run);        // not with -z
template <log::Sign sign>
bool With(const Run& run) {
    return run.Saw(sign);
}

// What a check finds; the proof is the log lines that reports show.
Finding Pass(const Text& expected, const Text& found, const Tally& proof = {});
Finding Fail(const Text& expected, const Text& found, const Tally& proof);
Finding Warn(const Text& expected, const Text& found, const Tally& proof);
Finding Inconclusive(const Text& expected, const Text& reason, const Tally& proof = {});
Finding NotReached(const Text& expected, const Text& found);

// For a switch: that the fault it asks for was injected.
constexpr const char* kFiredSentence = "The fault that the switch asks for was really injected.";
constexpr const char* kFired = "the fault to be injected";

/// @return the verdict on a fault that was not injected: why
/// @param otherwise  the reason if no switch explains it
Finding NotInjected(const Run& run, const Text& otherwise);

/// Something that must not happen, and what a report then says was found: what the DVR did wrong. Counts,
/// names and times, which differ from run to run, follow in parentheses (see KnownFailures.h).
struct Bad {
    const Tally& tally;
    const char* found;
    result::Verdict verdict = result::Verdict::Fail;
};

/// @return what was found, with note and count of the tally in parentheses
std::string Words(const Text& found, const Tally& tally);

/// Gives the verdict on the first of the bad things that happened; passes if none did and it was reached at
/// all.
Finding NoneOf(std::initializer_list<Bad> bad, bool reached, const Text& expected, const Text& notReached);

/// @return the seconds from a request, or the last word that it is being answered, to the end of the log; 0
/// if the log has no times
double Waited(const Run& run, const Request& request);

/// @return whether a request has waited so long that no answer can be expected any more
bool IsUnanswered(const Run& run, const Request& request, const Limits& limits);

/// @return the unanswered requests of this name without an injected fault, other than a new hash; all for ""
Tally Unanswered(const Run& run, std::string_view name, const Limits& limits);

/// @return what was found where a request got no answer
std::string NothingOfTheKind(const Run& run, const Request& request);

/// @return the message of which only the prefix came, though the harness waited for the text; none if it did
/// not wait long
Tally Stalled(const Run& run, const Limits& limits);

/// @return whether a request of this name, as above, is still waiting when the log ends
bool IsWaiting(const Run& run, std::string_view name);

/// @return whether the harness was interrupted only after it had run for longer than the patience
bool RanForLong(const Run& run, const Limits& limits);

}  // namespace rig::judge
