#include "rig/judge/Checks.h"

#include <fmt/format.h>

#include <initializer_list>

namespace rig::judge {
namespace {

using report::Verdict;

// When a check applies.
bool Always(const Run& /*run*/) {
    return true;
}
bool IsExport(const Run& run) {  // not with -g, which asks for nothing, nor with -z, which cannot get far
    return !run.Saw(Sign::ConfigSwitch) && !run.Saw(Sign::SizeSwitch);
}
bool IsSecondDialect(const Run& run) {
    return run.protocol == 2 && IsExport(run);
}
bool ProvokesReports(const Run& run) {
    const bool isProvoked = run.Saw(Sign::EventSwitch) || run.Saw(Sign::FileSwitch) ||
                            run.Saw(Sign::TransportSwitch) || run.Saw(Sign::XferSwitch);
    const bool isReported = run.Received("INVALID_EVENT") + run.Received("TRANSPORT_EXCEPTION") +
                                run.Received("XFER_IN_PROGRESS") >
                            0;
    return IsSecondDialect(run) && (isProvoked || isReported);
}
bool AsksWhole(const Run& run) {
    return !run.Saw(Sign::SizeSwitch);
}
template <Sign sign>
bool With(const Run& run) {
    return run.Saw(sign);
}

// What a check finds.
Finding Pass(const std::string& expected, const std::string& found, const Tally& proof = {}) {
    return {Verdict::Pass, expected, found, proof.Lines()};
}
Finding Fail(const std::string& expected, const std::string& found, const Tally& proof) {
    return {Verdict::Fail, expected, found, proof.Lines()};
}
Finding Inconclusive(const std::string& expected, const std::string& reason, const Tally& proof = {}) {
    return {Verdict::Inconclusive, expected, reason, proof.Lines()};
}
Finding NotReached(const std::string& expected, const std::string& found) {
    return {Verdict::NotReached, expected, found, {}};
}

bool IsKnownEnd(const Run& run) {
    return run.doneSent.Any() || run.Saw(Sign::ShuttingDown);
}

/// @return the seconds from a request to the end of the log
double Waited(const Run& run, const Request& request) {
    return run.endTime && request.time ? static_cast<double>(*run.endTime - *request.time) / 1e6 : 0;
}

/// @return whether a request stayed without an answer for so long that none can be hoped for
bool IsUnanswered(const Run& run, const Request& request, const Limits& limits) {
    return run.doneSent.Any() || (run.Saw(Sign::ShuttingDown) && Waited(run, request) >= limits.patience);
}

struct Bad {
    const Tally& tally;
    const char* found;
};

/// Fails with the first of the bad things that happened; passes where none did and it was reached at all.
Finding NoneOf(std::initializer_list<Bad> bad, bool reached, const std::string& expected,
               const std::string& notReached) {
    for (const Bad& one : bad) {
        if (one.tally.Any()) {
            return Fail(expected, fmt::format("{} ({}x)", one.found, one.tally.Count()), one.tally);
        }
    }
    return reached ? Pass(expected, "nothing else") : NotReached(expected, notReached);
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
    const bool waited = run.beginTime && run.endTime &&
                        static_cast<double>(*run.endTime - *run.beginTime) / 1e6 >= limits.patience;
    return run.Saw(Sign::ShuttingDown) && waited
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
    const bool waited = run.beginTime && run.endTime &&
                        static_cast<double>(*run.endTime - *run.beginTime) / 1e6 >= limits.patience;
    if (run.Saw(Sign::Connected) && run.Saw(Sign::ShuttingDown) && waited && !run.Saw(Sign::NotXml)) {
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

Finding MessagesFramed(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::BadPrefix), "a length prefix that goes on after its fifth byte"},
                   {run.badLength, "a length that no message has"}},
                  run.Saw(Sign::Expecting), "a length prefix of at most 5 bytes before every message",
                  "no message");
}

Finding MessagesParsed(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.noMessage, "a document without the element msg, which ends the harness"},
                   {run.Of(Sign::NotXml), "a message, or a description in one, that is no XML"},
                   {run.Of(Sign::NoRequest), "a message without req"}},
                  run.Saw(Sign::Incoming), "one XML document msg with req in every message", "no message");
}

Finding MessagesKnown(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::UnknownMessage), "a message that this dialect does not know"}},
                  run.Saw(Sign::Incoming), "messages of the dialect only", "no message");
}

Finding MessagesAsked(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.notAsked, "a message that nothing asked for, or that came twice"},
                   {run.Of(Sign::UnexpectedAnswer), "an answer to a request that was never made"}},
                  !run.received.empty(), "every message answers a request that waits for it", "no message");
}

Finding RequestsAnswered(const Run& run, const Limits& limits) {
    const std::string expected = "an answer to every request";
    Tally unanswered;
    for (const Request& request : run.pending) {
        if (IsUnanswered(run, request, limits)) {
            unanswered.Add(request.evidence);
        }
    }
    if (unanswered.Any()) {
        const Request& first = run.pending.front();
        return Fail(
            expected,
            fmt::format("no {} to {} {} {} in {:.1f} s (a connection closed between messages leaves no "
                        "line in the log)",
                        first.expects, first.name, first.reid, first.file, Waited(run, first)),
            unanswered);
    }
    if (!run.pending.empty()) {
        return Inconclusive(expected, "the log ends too soon to tell whether " + run.pending.front().expects +
                                          " would have come");
    }
    return run.received.empty() ? NotReached(expected, "no request") : Pass(expected, "an answer to each");
}

Finding EventListSource(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::NoSource), "EVENT_LIST without source"}}, run.Received("EVENT_LIST") > 0,
                  "source in EVENT_LIST", "no EVENT_LIST");
}

Finding EventListEvents(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "an identifier for each event in EVENT_LIST";
    if (run.Saw(Sign::NoEvents)) {
        return Inconclusive(expected, "no event was listed: the log cannot tell whether the DVR has none",
                            run.Of(Sign::NoEvents));
    }
    return NoneOf({{run.Of(Sign::EventWithoutText), "an event without identifier"},
                   {run.Of(Sign::NoEventTag), "EVENT_LIST without events"}},
                  run.Received("EVENT_LIST") > 0, expected, "no EVENT_LIST");
}

Finding EventsOnce(const Run& run, const Limits& /*limits*/) {
    const bool reached = run.Received("EVENT_LIST") + run.Received("XML") > 0;
    return NoneOf({{run.doubledEvents, "an event twice in one list"}}, reached, "each event once in the list",
                  "no list");
}

Finding EventReid(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::EventReidWrong), "the description of another event, or of none"}},
                  run.Received("EVENT") > 0, "the reid asked for in EVENT", "no EVENT");
}

Finding Description(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::NoDescription), "EVENT without xmlFile"},
                   {run.Of(Sign::EmptyDescription), "EVENT with an empty xmlFile"},
                   {run.Of(Sign::DescriptionWithoutReid), "a description without reid"},
                   {run.Of(Sign::DescriptionReidWrong), "a description of another event"},
                   {run.noEvent, "a description of something else than an event"},
                   {run.namelessFiles, "a description of a file without name, which ends the harness"}},
                  run.Received("EVENT") + run.Received("XML") > 0,
                  "a description with the event's reid and a name for each file", "no description");
}

Finding DescriptionFiles(const Run& run, const Limits& /*limits*/) {
    const Tally none;
    const bool isWrong = run.Saw(Sign::EventReidWrong) || run.Saw(Sign::NoDescription) ||
                         run.Saw(Sign::EmptyDescription) || run.noEvent.Any();
    return NoneOf({{isWrong ? none : run.Of(Sign::EventWithoutFiles), "an event without files"},
                   {run.noFiles, "a description without files"}},
                  run.Received("EVENT") + run.Received("XML") > 0, "at least one file for each event",
                  "no description");
}

Finding FileAttributes(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::FileWithoutNames), "FILE_COMPLETE without reid or without file"}},
                  run.Received("FILE_COMPLETE") > 0, "reid and file in FILE_COMPLETE", "no FILE_COMPLETE");
}

Finding FileIdentity(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::WrongFile), "the completion of a file that was not asked for"}},
                  run.Received("FILE_COMPLETE") > 0, "each file completed once, in the order of the requests",
                  "no FILE_COMPLETE");
}

Finding AckReid(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(Sign::AckWithoutReid), "EVENT_XFER_ACK without reid"},
                   {run.Of(Sign::AckReidWrong), "EVENT_XFER_ACK for another event"}},
                  run.Received("EVENT_XFER_ACK") > 0, "the event's reid in EVENT_XFER_ACK",
                  "no EVENT_XFER_ACK");
}

Finding ReportReid(const Run& run, const Limits& /*limits*/) {
    const bool reached = run.Received("INVALID_EVENT") + run.Received("TRANSPORT_EXCEPTION") +
                             run.Received("XFER_IN_PROGRESS") >
                         0;
    return NoneOf({{run.Of(Sign::RefusalWithoutReid), "INVALID_EVENT without reid"},
                   {run.otherReid, "a report about another event"},
                   {run.Of(Sign::TransportWithoutReid), "TRANSPORT_EXCEPTION without reid"},
                   {run.Of(Sign::XferWithoutReid), "XFER_IN_PROGRESS without reid"}},
                  reached, "the reid of the request in each report of a fault", "no report");
}

Finding ExportDone(const Run& run, const Limits& limits) {
    const std::string expected = "an export that ends with DONE";
    if (run.doneSent.Any()) {
        return Pass(expected, "DONE", run.Of(Sign::SendingDone));
    }
    if (!run.pending.empty() && IsUnanswered(run, run.pending.front(), limits)) {
        return Fail(expected, "the export stopped where no " + run.pending.front().expects + " came",
                    run.Of(Sign::ShuttingDown));
    }
    return NotReached(expected, "the log ends before");
}

// The groups of the switches.

constexpr const char* kFired = "the fault to be injected";

Finding Fired(const Run& run, Fault fault) {
    if (run.Of(fault).fired.Any()) {
        return Pass(kFired, "injected", run.Of(fault).fired);
    }
    if (run.protocol == 1) {
        return Inconclusive(kFired, "protocol 1.0 does not heed this switch: it was never injected");
    }
    const bool isFileFault = fault != Fault::Event && fault != Fault::Pause;
    if (fault == Fault::Rehash && run.Saw(Sign::XferSwitch) && run.Saw(Sign::RehashFault)) {
        return Inconclusive(kFired,
                            "with -r and -x together the request with rehash=\"true\" never goes out");
    }
    if (isFileFault && run.Received("EVENT") > 0 && !run.hasLargeEvent) {
        return Inconclusive(kFired, "never injected: no event had two files or more");
    }
    return Inconclusive(kFired, "never injected: the dialogue did not come to it");
}

Finding Answered(const Run& run, Fault fault, const std::string& expected, const Limits& limits) {
    const FaultRecord& record = run.Of(fault);
    if (!record.fired.Any()) {
        return NotReached(expected, "the fault was never injected");
    }
    if (record.wrong.Any()) {
        return Fail(expected, "an answer as if the request were good", record.wrong);
    }
    if (record.answered.Any()) {
        return Pass(expected, "it came", record.answered);
    }
    for (const Request& request : run.pending) {
        if (request.fault == fault && IsUnanswered(run, request, limits)) {
            return Fail(expected, "nothing of the kind", record.fired);
        }
    }
    return NotReached(expected, "the log ends before an answer came");
}

Finding EventFired(const Run& run, const Limits& /*limits*/) {
    return Fired(run, Fault::Event);
}
Finding EventAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Event, "INVALID_EVENT to the damaged identifier", limits);
}
Finding FileEventFired(const Run& run, const Limits& /*limits*/) {
    return Fired(run, Fault::FileEvent);
}
Finding FileEventAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::FileEvent, "INVALID_EVENT to the file of a damaged identifier", limits);
}
Finding FileNameFired(const Run& run, const Limits& /*limits*/) {
    return Fired(run, Fault::FileName);
}
Finding FileNameAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::FileName, "INVALID_EVENT to the damaged file name", limits);
}
Finding TransportFired(const Run& run, const Limits& /*limits*/) {
    return Fired(run, Fault::Transport);
}
Finding TransportAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Transport, "TRANSPORT_EXCEPTION while the failure marker exists", limits);
}
Finding XferFired(const Run& run, const Limits& /*limits*/) {
    return Fired(run, Fault::Xfer);
}
Finding XferAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Xfer, "XFER_IN_PROGRESS to the second of two requests", limits);
}
Finding PauseFired(const Run& run, const Limits& /*limits*/) {
    return run.Of(Fault::Pause).fired.Any() || run.protocol == 1
               ? Fired(run, Fault::Pause)
               : Inconclusive(kFired, "no pause was made: no event had three files or more");
}
Finding PauseAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Pause, "an export that goes on after the harness's pauses", limits);
}

Finding RehashFired(const Run& run, const Limits& /*limits*/) {
    return Fired(run, Fault::Rehash);
}
Finding RehashAttributes(const Run& run, const Limits& /*limits*/) {
    if (!run.Of(Fault::Rehash).fired.Any()) {
        return NotReached("hashCode and length when a new hash is asked for", "it was never asked for");
    }
    return NoneOf({{run.Of(Sign::NoHash), "an answer without hashCode"},
                   {run.Of(Sign::NoLength), "an answer without length"}},
                  run.Saw(Sign::SameHash) || run.Saw(Sign::NewHash),
                  "hashCode and length when a new hash is asked for", "no answer");
}
Finding RehashSame(const Run& run, const Limits& /*limits*/) {
    const std::string expected = "the same hash again for the same file";
    if (!run.Of(Fault::Rehash).fired.Any()) {
        return NotReached(expected, "a new hash was never asked for");
    }
    if (run.Saw(Sign::NewHash)) {
        return Inconclusive(expected,
                            "another hash: only who knows whether the recording changed between the two "
                            "requests can tell whether that is right",
                            run.Of(Sign::NewHash));
    }
    return run.Saw(Sign::SameHash) ? Pass(expected, "the same hash", run.Of(Sign::SameHash))
                                   : NotReached(expected, "no two hashes to compare");
}

Finding UpgradeFired(const Run& run, const Limits& /*limits*/) {
    for (const report::Evidence& line : run.Of(Sign::Opening).Lines()) {
        if (line.text.find("UPDATE_SOFTWARE") != std::string::npos) {
            return Pass(kFired, "UPDATE_SOFTWARE went out", run.Of(Sign::Opening));
        }
    }
    return Inconclusive(kFired, run.protocol == 1
                                    ? "protocol 1.0 does not heed this switch: it was never injected"
                                    : "never injected: the dialogue did not come to it");
}
Finding UpgradeAnswered(const Run& run, const Limits& limits) {
    const std::string expected = "SOFTWARE_UPDATE_CONFIRM to UPDATE_SOFTWARE";
    if (run.Received("SOFTWARE_UPDATE_CONFIRM") > 0) {
        return Pass(expected, "it came", run.received.at("SOFTWARE_UPDATE_CONFIRM"));
    }
    for (const Request& request : run.pending) {
        if (request.name == "UPDATE_SOFTWARE" && IsUnanswered(run, request, limits)) {
            return Fail(expected, "nothing of the kind", run.Of(Sign::Opening));
        }
    }
    return NotReached(expected, "the log ends before an answer came");
}

Finding ConfigFired(const Run& run, const Limits& /*limits*/) {
    return run.Saw(Sign::Opening) ? Pass(kFired, "UPDATE_CONFIGURATION went out", run.Of(Sign::Opening))
                                  : Inconclusive(kFired, "never injected: the dialogue did not come to it");
}
Finding ConfigAnswered(const Run& run, const Limits& limits) {
    const std::string expected = "CONFIGURATION_UPDATE_ERROR to the bogus configuration";
    if (run.Received("CONFIGURATION_UPDATE_ERROR") > 0) {
        return Pass(expected, "it came", run.received.at("CONFIGURATION_UPDATE_ERROR"));
    }
    for (const Request& request : run.pending) {
        if (request.name == "UPDATE_CONFIGURATION" && IsUnanswered(run, request, limits)) {
            return Fail(expected, "nothing of the kind", run.Of(Sign::Opening));
        }
    }
    return NotReached(expected, "the log ends before an answer came");
}

Finding SizeFired(const Run& run, const Limits& /*limits*/) {
    return run.Saw(Sign::SentWrongSize)
               ? Pass(kFired, "frames with a wrong prefix went out", run.Of(Sign::SentWrongSize))
               : Inconclusive(kFired, "never injected: no frame went out");
}
Finding SizeAnswered(const Run& run, const Limits& limits) {
    const std::string expected = "no answer to a frame that is shorter than its prefix says";
    if (!run.Saw(Sign::SentWrongSize)) {
        return NotReached(expected, "no frame went out");
    }
    if (run.answeredWrong.Any()) {
        return Fail(expected, "an answer as if the frame were whole", run.answeredWrong);
    }
    const bool waited = !run.pending.empty() && IsUnanswered(run, run.pending.front(), limits);
    return waited ? Pass(expected, "no answer")
                  : Inconclusive(expected, "the log ends too soon to tell whether an answer would have come");
}

Finding CloseFired(const Run& run, const Limits& /*limits*/) {
    if (run.protocol == 1) {
        return Inconclusive(kFired, "protocol 1.0 does not heed this switch: it was never injected");
    }
    if (run.doneSent.Any() && run.Saw(Sign::ClosingClient)) {
        return Pass(kFired, "the export was closed early", run.Of(Sign::ClosingClient));
    }
    return Inconclusive(
        kFired, run.doneSent.Any()
                    ? fmt::format("never injected: DONE came after {} acknowledgements, -c asks for {}",
                                  run.acksAtDone, run.closeEarly)
                    : "never injected: the dialogue did not come to it");
}
Finding CloseAnswered(const Run& run, const Limits& /*limits*/) {
    const std::string expected = fmt::format("{} acknowledgements, then DONE, then nothing", run.closeEarly);
    if (!run.Saw(Sign::ClosingClient) || !run.doneSent.Any()) {
        return NotReached(expected, "the export was not closed early");
    }
    if (run.acksAtDone != static_cast<std::uint64_t>(run.closeEarly)) {
        return Fail(expected, fmt::format("{} acknowledgements", run.acksAtDone), run.Of(Sign::Acknowledged));
    }
    return NoneOf({{run.afterDone, "a message after DONE"}}, true, expected, "");
}

Finding DurationFired(const Run& run, const Limits& /*limits*/) {
    if (run.protocol == 1) {
        return Inconclusive(kFired, "protocol 1.0 does not heed this switch: it was never injected");
    }
    return run.doneSent.Any() ? Pass(kFired, "DONE with a duration went out", run.Of(Sign::SendingDone))
                              : Inconclusive(kFired, "never injected: the dialogue did not come to DONE");
}
Finding DurationAnswered(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.afterDone, "a message after DONE"}}, run.doneSent.Any(), "nothing after DONE",
                  "no DONE");
}

bool HasReactionLimit(const Run& run) {
    return !run.reactions.empty();
}
Finding Reaction(const Run& run, const Limits& limits) {
    const double limit = limits.maxReaction.value_or(0);
    const std::string expected = fmt::format("every answer within {:.0f} ms", limit);
    for (const auto& [request, times] : run.reactions) {
        if (times.Longest() > limit) {
            return Fail(expected, fmt::format("{:.0f} ms for the answer to {}", times.Longest(), request),
                        {});
        }
    }
    return Pass(expected, "no answer took longer");
}

constexpr const char* kFiredSentence = "The fault that the switch asks for was really injected.";

}  // namespace

const std::vector<Check>& AllChecks() {
    static const std::vector<Check> kChecks = {
        {"log.start", "The log holds the start of the run.", Always, HasStart},
        {"log.whole", "The log holds the run to its end.", Always, LogIsWhole},
        {"harness.ran", "The harness could do its part.", Always, HarnessRan},
        {"connection.made", "The DVR connects.", Always, ConnectionMade},
        {"connection.opened", "The DVR opens the dialogue with OK.", Always, ConnectionOpened},
        {"connection.kept", "The DVR keeps its one connection until the export is done.", AsksWhole,
         ConnectionKept},
        {"messages.framed", "Every message has a good length prefix.", Always, MessagesFramed},
        {"messages.parsed", "Every message is an XML document with msg and req.", Always, MessagesParsed},
        {"messages.known", "Every message is one of the dialect's.", Always, MessagesKnown},
        {"messages.asked", "The DVR sends only what it is asked for, once.", AsksWhole, MessagesAsked},
        {"requests.answered", "The DVR answers every request.", AsksWhole, RequestsAnswered},
        {"event-list.source", "EVENT_LIST names its source.", IsSecondDialect, EventListSource},
        {"event-list.events", "EVENT_LIST names every event.", IsSecondDialect, EventListEvents},
        {"event-list.once", "No event is listed twice.", IsExport, EventsOnce},
        {"event.reid", "EVENT is about the event asked for.", IsSecondDialect, EventReid},
        {"event.description", "The description of an event is complete.", IsExport, Description},
        {"event.files", "An event has files.", IsExport, DescriptionFiles},
        {"file-complete.attributes", "FILE_COMPLETE names event and file.", IsExport, FileAttributes},
        {"file-complete.identity", "Every file requested is completed once, in order.", IsExport,
         FileIdentity},
        {"event-ack.reid", "Every event is acknowledged under its own identifier.", IsSecondDialect, AckReid},
        {"fault-report.reid", "The report of a fault names the event of the request.", ProvokesReports,
         ReportReid},
        {"export.done", "The export ends with DONE.", IsExport, ExportDone},
        {"invalid-event.fired", kFiredSentence, With<Sign::EventSwitch>, EventFired},
        {"invalid-event.answer", "The DVR refuses an event that it does not have.", With<Sign::EventSwitch>,
         EventAnswered},
        {"invalid-file.fired-event", kFiredSentence, With<Sign::FileSwitch>, FileEventFired},
        {"invalid-file.answer-event", "The DVR refuses a file of an event that it does not have.",
         With<Sign::FileSwitch>, FileEventAnswered},
        {"invalid-file.fired-name", kFiredSentence, With<Sign::FileSwitch>, FileNameFired},
        {"invalid-file.answer-name", "The DVR refuses a file that it does not have.", With<Sign::FileSwitch>,
         FileNameAnswered},
        {"transport.fired", kFiredSentence, With<Sign::TransportSwitch>, TransportFired},
        {"transport.answer", "The DVR reports a transfer that fails.", With<Sign::TransportSwitch>,
         TransportAnswered},
        {"rehash.fired", kFiredSentence, With<Sign::RehashSwitch>, RehashFired},
        {"rehash.attributes", "The DVR gives hash and length when a new hash is asked for.",
         With<Sign::RehashSwitch>, RehashAttributes},
        {"rehash.same-hash", "The hash of a file that did not change does not change.",
         With<Sign::RehashSwitch>, RehashSame},
        {"xfer.fired", kFiredSentence, With<Sign::XferSwitch>, XferFired},
        {"xfer.answer", "The DVR says that the file asked for again is in transfer.", With<Sign::XferSwitch>,
         XferAnswered},
        {"upgrade.fired", kFiredSentence, With<Sign::UpgradeSwitch>, UpgradeFired},
        {"upgrade.answer", "The DVR confirms a software update.", With<Sign::UpgradeSwitch>, UpgradeAnswered},
        {"config.fired", kFiredSentence, With<Sign::ConfigSwitch>, ConfigFired},
        {"config.answer", "The DVR refuses a bogus configuration.", With<Sign::ConfigSwitch>, ConfigAnswered},
        {"size.fired", kFiredSentence, With<Sign::SizeSwitch>, SizeFired},
        {"size.answer", "The DVR does not go on as if a frame that is too short were whole.",
         With<Sign::SizeSwitch>, SizeAnswered},
        {"close.fired", kFiredSentence, With<Sign::CloseSwitch>, CloseFired},
        {"close.answer", "The DVR takes an export that ends early.", With<Sign::CloseSwitch>, CloseAnswered},
        {"duration.fired", kFiredSentence, With<Sign::DurationSwitch>, DurationFired},
        {"duration.answer", "The DVR takes DONE with a duration.", With<Sign::DurationSwitch>,
         DurationAnswered},
        {"sleep.fired", kFiredSentence, With<Sign::SleepSwitch>, PauseFired},
        {"sleep.answer", "The DVR bears pauses between requests.", With<Sign::SleepSwitch>, PauseAnswered},
        {"reaction.time", "The DVR answers within the time given.", HasReactionLimit, Reaction},
    };
    return kChecks;
}

std::vector<report::CheckResult> JudgeRun(const Run& run, const Limits& limits) {
    std::vector<report::CheckResult> results;
    for (const Check& check : AllChecks()) {
        if (!check.applies(run) || (check.judge == Reaction && !limits.maxReaction)) {
            continue;
        }
        Finding finding = check.judge(run, limits);
        results.push_back({check.id, check.requirement, finding.verdict, std::move(finding.expected),
                           std::move(finding.found), std::move(finding.evidence)});
    }
    return results;
}

}  // namespace rig::judge
