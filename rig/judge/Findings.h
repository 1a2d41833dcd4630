#pragma once

#include <initializer_list>
#include <string>

#include "rig/judge/Checks.h"

namespace rig::judge {

// When a check applies.
bool Always(const Run& run);
bool IsExport(const Run& run);  // not with -g, which asks for nothing, nor with -z, which cannot get far
bool IsSecondDialect(const Run& run);  // an export in 2.0
bool AsksWhole(const Run& run);        // not with -z
template <Sign sign>
bool With(const Run& run) {
    return run.Saw(sign);
}

// What a check finds; the proof is the log lines that reports show.
Finding Pass(const std::string& expected, const std::string& found, const Tally& proof = {});
Finding Fail(const std::string& expected, const std::string& found, const Tally& proof);
Finding Inconclusive(const std::string& expected, const std::string& reason, const Tally& proof = {});
Finding NotReached(const std::string& expected, const std::string& found);

/// Something that must not happen, and what a report says was found then.
struct Bad {
    const Tally& tally;
    const char* found;
};

/// Fails with the first of the bad things that happened; passes where none did and it was reached at all.
Finding NoneOf(std::initializer_list<Bad> bad, bool reached, const std::string& expected,
               const std::string& notReached);

/// @return the seconds from a request to the end of the log; 0 where the log has no times
double Waited(const Run& run, const Request& request);

/// @return whether a request stayed without an answer for so long that none can be hoped for
bool IsUnanswered(const Run& run, const Request& request, const Limits& limits);

/// @return whether the harness was interrupted only after it had run for longer than the patience
bool RanForLong(const Run& run, const Limits& limits);

}  // namespace rig::judge
