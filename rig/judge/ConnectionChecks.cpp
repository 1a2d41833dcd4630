#include "rig/judge/Checks.h"
#include "rig/judge/Findings.h"

namespace rig::judge {
namespace {

using report::Verdict;

bool IsKnownEnd(const Run& run) {
    return run.doneSent.Any() || run.Saw(Sign::ShuttingDown);
}

Finding HasStart(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "the switches, or the line \"Connected to: \"";
    return run.hasStart
               ? Pass(expected, "the start of the run")
               : Inconclusive(expected, "the log begins in the middle of a run: its switches are unknown");
}

Finding HarnessRan(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "a harness that serves until it is interrupted";
    if (run.Saw(Sign::BindFailed)) {
        return {Verdict::Environment, expected, "port 5001 was taken", run.Of(Sign::BindFailed).Lines()};
    }
    if (run.Saw(Sign::NoSignalHandler)) {
        return {Verdict::Environment, expected, "no handler for SIGINT",
                run.Of(Sign::NoSignalHandler).Lines()};
    }
    return Pass(expected, "no failure of the harness itself");
}

Finding LogIsWhole(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "every message whole, and the end of the run";
    if (run.damaged.Any()) {
        return Inconclusive(expected, "messages of which the log holds a part only", run.damaged);
    }
    const bool isEnd = IsKnownEnd(run) || run.Saw(Sign::BindFailed) || run.Saw(Sign::NoSignalHandler);
    return isEnd ? Pass(expected, "both")
                 : Inconclusive(expected,
                                "the log ends before DONE and without \"shutting down\": it was cut, or the "
                                "harness was killed, aborted or still runs");
}

Finding ConnectionMade(const Run& run, const Limits& limits) {
    const std::string expected = "a connection of the DVR";
    if (run.Saw(Sign::Connected) || run.Saw(Sign::Expecting)) {
        return Pass(expected, "connected", run.Of(Sign::Connected));
    }
    if (run.Saw(Sign::BindFailed) || run.Saw(Sign::NoSignalHandler)) {
        return NotReached(expected, "the harness could not listen");
    }
    return RanForLong(run, limits)
               ? Fail(expected, "none until the harness was interrupted", run.Of(Sign::ShuttingDown))
               : Inconclusive(expected, "none yet when the log ends");
}

Finding ConnectionOpened(const Run& run, const Limits& limits) {
    const std::string expected = "OK as the first message";
    if (run.openedByOk) {
        return Pass(expected, "OK", run.Of(Sign::Opening));
    }
    if (!run.hasStart) {
        return Inconclusive(expected, "the log begins behind the opening");
    }
    if (!run.received.empty()) {
        return Fail(expected, "another message", run.received.begin()->second);
    }
    if (run.Saw(Sign::Connected) && RanForLong(run, limits) && !run.Saw(Sign::NotXml)) {
        return Fail(expected, "nothing until the harness was interrupted", run.Of(Sign::Connected));
    }
    return NotReached(expected, "no message that could be read");
}

Finding ConnectionKept(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "one connection, kept until DONE, ended nowhere inside a message";
    for (const report::Evidence& assertion : run.assertions.Lines()) {
        if (!run.doneSent.Any() && assertion.text.find("g_clientFd") != std::string::npos) {
            return Fail(expected, "a second connection while the first was served", run.assertions);
        }
    }
    const Tally none;
    const bool isDone = run.doneSent.Any();
    return NoneOf({{run.Of(Sign::EndInsideText), "a connection that ended inside a message"},
                   {run.Of(Sign::TextReadError), "a connection that was reset inside a message"},
                   {isDone ? none : run.Of(Sign::PrefixReadError), "a connection that was reset"},
                   {isDone ? none : run.Of(Sign::SendFailed), "a connection that took no more messages"}},
                  run.Saw(Sign::Connected) || run.Saw(Sign::Expecting), expected, "no connection");
}

}  // namespace

const std::vector<Check>& ConnectionChecks() {
    static const std::vector<Check> kChecks = {
        {"log.start", "The log holds the start of the run.", Always, HasStart},
        {"log.whole", "The log holds the run to its end.", Always, LogIsWhole},
        {"harness.ran", "The harness could do its part.", Always, HarnessRan},
        {"connection.made", "The DVR connects.", Always, ConnectionMade},
        {"connection.opened", "The DVR opens the dialogue with OK.", Always, ConnectionOpened},
        {"connection.kept", "The DVR keeps its one connection until the export is done.", AsksWhole,
         ConnectionKept},
    };
    return kChecks;
}

}  // namespace rig::judge
