#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rig/judge/Run.h"

namespace rig::judge {

/// What the proxy's log says of one run.
struct WireFacts {
    std::unique_ptr<KeptLines> lines = std::make_unique<KeptLines>();  // of that log, that prove something
    bool isCut = false;                                                // the log, in its last line
    std::int64_t last = 0;                                             // its last event, microseconds
    std::uint64_t connections = 0;
    std::map<std::string, std::uint64_t> passed;  // messages of the DVR to the harness; "" without a name

    // Faults, by what became of them.
    Tally acted;
    Tally neverActed;   // planned
    Tally unknown;      // which this judge does not have in its table
    Tally obeyed;       // the DVR did what it must refuse
    Tally notReport;    // it answered that by something that is not a report
    Tally notRefused;   // it did not answer that
    Tally hungUp;       // it hung up instead of answering that
    Tally notAnswered;  // it did not answer what is legal
    Tally unfinished;   // the log, or the connection, ended before the fault
    Tally keptOpen;     // the DVR did not end a connection on which nothing more came
    Tally ended;        // it did, or ended one on which something bad came

    bool isDisturbed = false;  // the export, by a fault that need only be survived, or that has ended it

    Tally longPrefixes;
    Tally afterDone;          // messages of the DVR
    Tally afterFaultAndDone;  // the same, where they may answer what a fault has made up
    Tally early;              // answers that came before the request
    Tally secondCalls;        // while a connection was open
    std::map<std::string, ReactionTimes> reactions;

    std::optional<std::int64_t> doneTime;     // when the DVR got the last DONE as the harness meant it
                                              // and no call has come since
    std::optional<std::int64_t> calledAfter;  // the shortest time from DONE to a call, microseconds
    Tally calledAgain;                        // that call
    std::uint64_t refusedCalls = 0;

    std::uint64_t endedByDvr = 0;  // connections, and who ended them first
    std::uint64_t endedByHarness = 0;
    std::uint64_t endedByProxy = 0;
    std::uint64_t endedByFault = 0;
    Tally beforeDone;  // connections that the DVR ended in mid-export
    Tally leftOpen;    // that the DVR did not end after DONE
    Tally stillOpen;   // when the log ends

    std::vector<result::Step> steps;  // only when asked for
};

}  // namespace rig::judge
