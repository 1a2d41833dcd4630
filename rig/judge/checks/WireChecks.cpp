#include <fmt/format.h>

#include "rig/base/Counted.h"
#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"
#include "rig/judge/wire/WireFacts.h"

// What the proxy's log tells.

namespace rig::judge {
namespace {

using result::Verdict;

constexpr double kSecondsOfMinute = 60;

double Seconds(std::int64_t microseconds) {
    return static_cast<double>(microseconds) / 1e6;
}

bool HadFaults(const Run& run) {
    return run.wire->acted.Any();
}
bool HadPlan(const Run& run) {
    return HadFaults(run) || run.wire->neverActed.Any();
}
bool HadToHangUp(const Run& run) {
    return run.wire->keptOpen.Any() || run.wire->ended.Any();
}
bool HasTimes(const Run& run) {
    return !run.wire->reactions.empty();
}

/// @return a message that the harness has read more often than the proxy passed it on; empty if there is none
std::string MissingOnTheWire(const Run& run) {
    const auto& passed = run.wire->passed;
    const auto countOf = [&passed](const std::string& name) {
        const auto found = passed.find(name);
        return found == passed.end() ? 0 : found->second;
    };
    for (const auto& [name, tally] : run.received) {
        const std::uint64_t most = countOf(name) + countOf("");
        if (!name.empty() && tally.Count() > most) {
            return fmt::format("{}: {} in the harness's log, {} in the proxy's", name, tally.Count(), most);
        }
    }
    return "";
}

Finding WireLog(const Run& run, const Limits& /*limits*/) {
    const Text expected = "all connections of the run, to their ends";
    const WireFacts& wire = *run.wire;
    if (wire.isCut) {
        return Inconclusive(expected, "the proxy's log is cut in its last line");
    }
    if (wire.connections == 0 && !run.received.empty()) {
        return Inconclusive(expected, "the proxy's log has no connection of this run");
    }
    if (const std::string missing = MissingOnTheWire(run); !missing.empty()) {
        return Inconclusive(expected,
                            "the proxy's log is not of this run, or lacks a part (" + missing + ")");
    }
    return wire.stillOpen.Any()
               ? Inconclusive(expected, "the proxy's log ends while a connection is open", wire.stillOpen)
               : Pass(expected, Counted(wire.connections, "connection"));
}

Finding FaultActed(const Run& run, const Limits& /*limits*/) {
    const WireFacts& wire = *run.wire;
    const Text expected = "each fault that the proxy was to play";
    if (wire.neverActed.Any()) {
        return Inconclusive(expected, Words("a fault that never acted", wire.neverActed), wire.neverActed);
    }
    return wire.unknown.Any()
               ? Inconclusive(expected, Words("a fault that this judge does not know", wire.unknown),
                              wire.unknown)
               : Pass(expected, Words("it acted", wire.acted), wire.acted);
}

Finding FaultAnswer(const Run& run, const Limits& /*limits*/) {
    const WireFacts& wire = *run.wire;
    return NoneOf({{wire.obeyed, "the DVR did what it must refuse"},
                   {wire.notReport, "the DVR answered what it must refuse by something that is not a report"},
                   {wire.hungUp, "the DVR hung up on what it must refuse by a report"},
                   {wire.notRefused, "the DVR did not report what it must refuse"},
                   {wire.notAnswered, "the DVR did not answer what is legal"},
                   {wire.unfinished, "the connection, or the proxy's log, ended before the fault was over",
                    Verdict::Inconclusive}},
                  true, "what each fault leaves to the DVR", "");
}

Finding FaultHungUp(const Run& run, const Limits& /*limits*/) {
    const WireFacts& wire = *run.wire;
    const Text expected = "the end of a connection that is of no more use";
    return wire.keptOpen.Any()
               ? Fail(expected, Words("a connection kept open on which nothing more came", wire.keptOpen),
                      wire.keptOpen)
               : Pass(expected, Words("the DVR ended it", wire.ended), wire.ended);
}

Finding WirePrefix(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.wire->longPrefixes,
                    "a prefix that is longer than need be: legal, but some readers stop "
                    "where they find one",
                    Verdict::Warning}},
                  run.wire->connections > 0, "prefixes as short as they can be", "no connection");
}

Finding WireAfterDone(const Run& run, const Limits& /*limits*/) {
    const WireFacts& wire = *run.wire;
    return NoneOf(
        {{wire.afterDone, "a message after DONE"},
         {wire.afterFaultAndDone, "a message after DONE, on a connection with a fault: it may answer that",
          Verdict::Inconclusive}},
        wire.connections > 0, "nothing of the export after DONE", "no connection");
}

Finding WireCalls(const Run& run, const Limits& /*limits*/) {
    const WireFacts& wire = *run.wire;
    const bool isToStayAway = run.switches.protocol == 2 && run.Saw(log::Sign::DurationSwitch);
    const double asked = isToStayAway ? static_cast<double>(run.switches.doneDuration) * kSecondsOfMinute : 0;
    const Text expected = isToStayAway
                              ? Text(fmt::format("one call at a time, and none for {} min after DONE",
                                                 run.switches.doneDuration))
                              : Text("one call at a time");
    if (wire.secondCalls.Any()) {
        return Fail(expected, Words("a second connection while the first was open", wire.secondCalls),
                    wire.secondCalls);
    }
    if (wire.calledAfter && Seconds(*wire.calledAfter) < asked) {
        return Fail(expected,
                    fmt::format("the DVR called before the time was over (after {:.1f} s, not {:.0f} s)",
                                Seconds(*wire.calledAfter), asked),
                    wire.calledAgain);
    }
    const double watched = wire.doneTime ? Seconds(wire.last - *wire.doneTime) : asked;
    if (watched < asked) {
        return Inconclusive(
            expected, fmt::format("no call, but the proxy's log ends too soon (after {:.1f} s)", watched));
    }
    return Pass(expected, Counted(wire.connections, "call") +
                              (wire.refusedCalls > 0
                                   ? fmt::format(" ({} when the harness did not listen)", wire.refusedCalls)
                                   : ""));
}

Finding WireOrder(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.wire->early, "an answer that was sent before the harness had asked"}},
                  run.wire->connections > 0, "each answer after its request", "no connection");
}

Finding WireClosed(const Run& run, const Limits& /*limits*/) {
    const WireFacts& wire = *run.wire;
    const Text expected = "each connection ended after DONE, and not before";
    if (wire.leftOpen.Any()) {
        return Warn(expected, Words("a connection that the DVR left open after DONE", wire.leftOpen),
                    wire.leftOpen);
    }
    if (wire.beforeDone.Any() && IsExport(run)) {
        return Warn(expected, Words("the DVR ended the connection in mid-export", wire.beforeDone),
                    wire.beforeDone);
    }
    const std::uint64_t ended = wire.endedByDvr + wire.endedByHarness + wire.endedByProxy + wire.endedByFault;
    return ended == 0 ? NotReached(expected, "no connection has ended")
                      : Pass(expected, fmt::format("ended first by the DVR: {}, by the harness: {}, by the "
                                                   "proxy: {}, by a fault: {}",
                                                   wire.endedByDvr, wire.endedByHarness, wire.endedByProxy,
                                                   wire.endedByFault));
}

Finding WireReaction(const Run& run, const Limits& limits) {
    const double limit = limits.maxReaction.value_or(0);
    const Text expected = fmt::format("every answer within {:.0f} ms on the wire", limit);
    for (const auto& [request, times] : run.wire->reactions) {
        if (times.Longest() > limit) {
            return {Verdict::Fail, expected,
                    fmt::format("a late answer to {} (after {:.1f} ms)", request, times.Longest()),
                    Proof({times.LongestAt()})};
        }
    }
    return Pass(expected, "none that took longer");
}

}  // namespace

const std::vector<Check>& WireChecks() {
    static const std::vector<Check> kChecks = {
        {"wire.log", "The proxy's log is whole, and of this run.",
         "its last line; the messages that the harness has read, against those that the proxy passed on; "
         "only with --proxy",
         Always, WireLog, Needs::Wire},
        {"fault.acted", "Each fault of the proxy acts.",
         "plan and fault in the proxy's log; only with --proxy", HadPlan, FaultActed, Needs::Wire},
        {"fault.answer", "The DVR answers what a faulty backend makes up as it must.",
         "the messages in the proxy's log that were taken off, against the fault's duty (proxy "
         "--list-faults); only with --proxy",
         HadFaults, FaultAnswer, Needs::Wire},
        {"fault.hung-up", "The DVR ends a connection that a faulty backend has made useless.",
         "kept-open in the proxy's log, or who ended the connection; only with --proxy", HadToHangUp,
         FaultHungUp, Needs::Wire},
        {"wire.prefix", "The DVR's prefixes are as short as they can be.",
         "prefixBytes against textBytes in the proxy's log; only with --proxy", Always, WirePrefix,
         Needs::Wire},
        {"wire.order", "The DVR answers what it has been asked, and not before.",
         "the order of frames in the proxy's log; only with --proxy", AsksWhole, WireOrder, Needs::Wire},
        {"wire.after-done", "The DVR sends nothing after DONE.",
         "frames after DONE in the proxy's log, on the same connection; only with --proxy", Always,
         WireAfterDone, Needs::Wire},
        {"wire.calls", "The DVR calls once at a time, and stays away as long as DONE says.",
         "connect in the proxy's log; only with --proxy", Always, WireCalls, Needs::Wire},
        {"wire.closed", "The DVR ends the connection after DONE.",
         "who ended it first, by the proxy's log; only with --proxy", Always, WireClosed, Needs::Wire},
        {"wire.reaction", "The DVR answers within the time given, measured on the wire.",
         "the time from each request to its answer in the proxy's log; only with --proxy and --max-reaction",
         HasTimes, WireReaction, Needs::WireTimes},
    };
    return kChecks;
}

}  // namespace rig::judge
