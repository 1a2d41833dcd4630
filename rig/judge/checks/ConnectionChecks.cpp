#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

using result::Verdict;

bool IsKnownEnd(const Run& run) {
    return (run.doneSent.Any() && !run.isExporting) || run.Saw(log::Sign::ShuttingDown);
}

bool Holds(const result::Evidence& line, const char* text) {
    return line.text.find(text) != std::string::npos;
}

/// @return whether the harness aborted because another connection came while it served one
bool IsSecondConnection(const result::Evidence& assertion) {
    return Holds(assertion, "FD_ISSET(g_clientFd") || Holds(assertion, "select(g_serverFd+g_clientFd+1");
}

/// @return whether the harness aborted for something that the DVR sent or did
bool IsForTheDvr(const result::Evidence& assertion) {
    return IsSecondConnection(assertion) || Holds(assertion, "expectedSize not_eq -1") ||
           Holds(assertion, "readBytes == expectedSize") || Holds(assertion, ".Error()") ||
           Holds(assertion, "writelen == ");
}

Finding HasStart(const Run& run, const Limits& /*limits*/) {
    const Text expected = "the switches, or the line \"Connected to: \"";
    return run.hasStart
               ? Pass(expected, "the start of the run")
               : Inconclusive(expected, "the log begins in the middle of a run: its switches are unknown");
}

Finding HarnessRan(const Run& run, const Limits& /*limits*/) {
    const Text expected = "a harness that serves until it is interrupted";
    if (run.Saw(log::Sign::BindFailed)) {
        return {Verdict::Environment, expected, "port 5001 was taken", run.Of(log::Sign::BindFailed).Shown()};
    }
    if (run.Saw(log::Sign::NoSignalHandler)) {
        return {Verdict::Environment, expected, "no handler for SIGINT",
                run.Of(log::Sign::NoSignalHandler).Shown()};
    }
    for (const result::Evidence& assertion : run.assertions.Lines()) {
        if (!IsForTheDvr(assertion)) {
            return {Verdict::Environment, expected, "it aborted for a reason of its own", Proof({assertion})};
        }
    }
    if (run.exceptions.Any() && !run.EndedByMessage()) {
        return {Verdict::Environment, expected, "an exception of its own ended it", run.exceptions.Shown()};
    }
    if (run.markerFailures.Any()) {
        return {Verdict::Environment, expected,
                "its shell could not make the failure marker: /mnt/hd is missing or cannot be written",
                run.markerFailures.Shown()};
    }
    return Pass(expected, "no failure of the harness itself");
}

Finding LogIsWhole(const Run& run, const Limits& /*limits*/) {
    const Text expected = "every message whole, and the end of the run";
    if (run.damaged.Any()) {
        return Inconclusive(expected, "messages that the log holds only in part", run.damaged);
    }
    if (run.HarnessEnded()) {
        return Pass(expected, "the log ends where the harness aborts for what the DVR did",
                    run.assertions.Any() ? run.assertions : run.exceptions);
    }
    if (IsKnownEnd(run) || run.Saw(log::Sign::BindFailed) || run.Saw(log::Sign::NoSignalHandler)) {
        return Pass(expected, "both");
    }
    return run.last == log::Sign::HeaderByte
               ? Inconclusive(
                     expected,
                     "the log ends after a request: it was cut, or the harness still runs, was "
                     "killed, or was ended by SIGPIPE (status 141), as it is when the DVR closes the "
                     "connection instead of waiting for the request")
               : Inconclusive(expected,
                              "the log ends before DONE and without \"shutting down\": it was cut, or the "
                              "harness was killed, aborted or still runs");
}

Finding LogIsUnderstood(const Run& run, const Limits& /*limits*/) {
    const Text expected = "every request as long as the judge believes";
    return run.misread.Any()
               ? Inconclusive(
                     expected,
                     Words("the judge misread what the harness asked for, a fault of its own: nothing "
                           "that follows from it is held against the DVR",
                           run.misread),
                     run.misread)
               : Pass(expected, "every request is");
}

Finding ConnectionMade(const Run& run, const Limits& limits) {
    const Text expected = "a connection of the DVR";
    if (run.Saw(log::Sign::Connected) || run.Saw(log::Sign::Expecting)) {
        return Pass(expected, "connected", run.Of(log::Sign::Connected));
    }
    if (run.Saw(log::Sign::BindFailed) || run.Saw(log::Sign::NoSignalHandler)) {
        return NotReached(expected, "the harness could not listen");
    }
    return RanForLong(run, limits) ? Fail(expected, "no DVR connected until the harness was interrupted",
                                          run.Of(log::Sign::ShuttingDown))
                                   : Inconclusive(expected, "none yet when the log ends");
}

Finding ConnectionOpened(const Run& run, const Limits& limits) {
    const Text expected = "OK as the first message";
    if (run.openedByOk) {
        return Pass(expected, "OK", run.Of(log::Sign::Opening));
    }
    if (!run.hasStart) {
        return Inconclusive(expected, "the log begins after the opening");
    }
    if (run.Saw(log::Sign::NoRequest)) {
        return Fail(expected, Words("a message without req", run.Of(log::Sign::NoRequest)),
                    run.Of(log::Sign::NoRequest));
    }
    if (!run.received.empty()) {
        return Fail(expected, "another message (" + run.opening + ")", run.received.begin()->second);
    }
    if (run.Saw(log::Sign::Connected) && RanForLong(run, limits) && !run.HarnessEnded() &&
        !run.Saw(log::Sign::Expecting)) {
        return Fail(expected, "the DVR connected and sent nothing", run.Of(log::Sign::Connected));
    }
    return NotReached(expected, "no message that could be read");
}

Finding ConnectionKept(const Run& run, const Limits& /*limits*/) {
    const Text expected = "one connection, kept until DONE, ended nowhere inside a message";
    const bool isDone = run.doneSent.Any() && !run.isExporting;
    for (const result::Evidence& assertion : run.assertions.Lines()) {
        if (!isDone && IsSecondConnection(assertion)) {
            return Fail(expected,
                        "the DVR opened a second connection while the first was served (" +
                            run.AfterWhat().substr(2) + ")",
                        run.assertions);
        }
    }
    const Tally none;
    return NoneOf(
        {{run.Of(log::Sign::TextReadError), "the DVR reset the connection inside a message"},
         {run.Of(log::Sign::EndInsideText),
          "the DVR ended the connection inside a message, or announced more than it sent"},
         {isDone ? none : run.Of(log::Sign::PrefixReadError), "the DVR reset the connection before the end"},
         {isDone ? none : run.Of(log::Sign::SendFailed),
          "the DVR ended the connection instead of waiting for "
          "the harness's message"}},
        run.Saw(log::Sign::Connected) || run.Saw(log::Sign::Expecting), expected, "no connection");
}

}  // namespace

const std::vector<Check>& ConnectionChecks() {
    static const std::vector<Check> kChecks = {
        {"log.start", "The log holds the start of the run.", "the switches echoed, or \"Connected to: \"",
         Always, HasStart},
        {"log.whole", "The log holds the run to its end.",
         "\"Sending DONE\", \"shutting down\" or an assertion at the end; slices of every message without a "
         "gap",
         Always, LogIsWhole},
        {"log.understood", "The judge knows what the harness asks for.",
         "the length of each request, \"hdr[\", against what the judge believes was asked for",
         With<log::Sign::HeaderByte>, LogIsUnderstood},
        {"harness.ran", "The harness could do its part.",
         "\"bind failed: \", \"Could not install SIGINT handler\", an assertion that is not about the DVR, "
         "the shell's complaint about the marker",
         Always, HarnessRan},
        {"connection.made", "The DVR connects.", "\"Connected to: \"", Always, ConnectionMade,
         Needs::WholeLog},
        {"connection.opened", "The DVR opens the dialogue with OK.",
         "\"got an OK, sending \" as the first reaction", Always, ConnectionOpened, Needs::WholeLog},
        {"connection.kept", "The DVR keeps its one connection until the export is done.",
         "\"EOF at: \", read errors, an assertion about a second connection", AsksWhole, ConnectionKept},
    };
    return kChecks;
}

}  // namespace rig::judge
