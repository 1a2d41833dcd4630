#include <fmt/format.h>

#include <algorithm>

#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"
#include "rig/protocol/Catalogue.h"

namespace rig::judge {
namespace {

constexpr const char* kNoEventListed =
    "no event was listed: the log cannot tell whether the DVR has none, and nothing was exported";

bool HasReports(const Run& run) {
    return std::any_of(run.received.begin(), run.received.end(),
                       [](const auto& message) { return protocol::IsReport(message.first); });
}

bool ProvokesReports(const Run& run) {
    const bool isProvoked = run.Saw(log::Sign::EventSwitch) || run.Saw(log::Sign::FileSwitch) ||
                            run.Saw(log::Sign::TransportSwitch) || run.Saw(log::Sign::XferSwitch);
    return IsSecondDialect(run) && (isProvoked || HasReports(run));
}

Finding EventListSource(const Run& run, const Limits& /*limits*/) {
    return NoneOf(
        {{run.Of(log::Sign::NoSource), "EVENT_LIST without source"},
         {run.emptySource, "EVENT_LIST with an empty source, which tells nobody where events come from",
          result::Verdict::Warning}},
        run.Received("EVENT_LIST") > 0, "source in EVENT_LIST", "no EVENT_LIST");
}

Finding EventListEvents(const Run& run, const Limits& /*limits*/) {
    static const Tally kNone;
    const Text expected = "an identifier for each event in EVENT_LIST";
    if (run.Saw(log::Sign::NoEvents) && !run.listedElsewhere.Any()) {
        return Inconclusive(expected, kNoEventListed, run.Of(log::Sign::NoEvents));
    }
    const bool isEmpty = run.hasEmptyEvent || !run.notEvents.Any();
    return NoneOf(
        {{run.listedElsewhere, "EVENT_LIST with its events where the harness does not look for them"},
         {isEmpty ? run.Of(log::Sign::EventWithoutText) : kNone, "an event without identifier in EVENT_LIST"},
         {run.Of(log::Sign::NoEventTag), "EVENT_LIST without events"},
         {run.notEvents,
          "a comment or text after the first event in EVENT_LIST, which the harness takes for an event "
          "without identifier and leaves out",
          result::Verdict::Warning},
         {run.secondLists, "EVENT_LIST with a second events: the harness reads only the first",
          result::Verdict::Warning}},
        run.Received("EVENT_LIST") > 0, expected, "no EVENT_LIST");
}

Finding EventsOnce(const Run& run, const Limits& /*limits*/) {
    const bool reached = run.Received("EVENT_LIST") + run.Received("XML") > 0;
    return NoneOf({{run.doubledEvents, "an event that is listed twice"}}, reached,
                  "each event once in the list", "no list");
}

Finding EventReid(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.refused, "INVALID_EVENT about an event that EVENT_LIST names"},
                   {run.otherEvent, "EVENT about another event than the one asked for, or about none"}},
                  run.Received("EVENT") > 0, "EVENT with the reid asked for", "no EVENT");
}

Finding Description(const Run& run, const Limits& /*limits*/) {
    static const Tally kNone;
    return NoneOf(
        {{run.Of(log::Sign::NoDescription), "EVENT without xmlFile"},
         {run.Of(log::Sign::EmptyDescription), "EVENT with an empty xmlFile"},
         {run.noDescriptions, "XML without xmlFile"},
         {run.Of(log::Sign::DescriptionWithoutReid), "a description without reid"},
         {run.Of(log::Sign::DescriptionReidWrong), "a description of another event than the one asked for"},
         {run.noEvent, "a description that is empty, or of something other than an event"},
         {run.namelessFiles, "a description of a file without name, for which the harness aborts"},
         {run.emptyReids, "a description with an empty reid"},
         {run.emptyNames, "a description of a file with an empty name"},
         {run.notFiles, "a description with a comment or text in a stream, for which the harness aborts"},
         {run.EndedByMessage() ? run.deadlyDescriptions : kNone,
          "a description of which the harness cannot take a file's name, and aborts"},
         {run.secondDescriptions, "a message with a second xmlFile: the harness reads only the first",
          result::Verdict::Warning}},
        run.Received("EVENT") + run.Received("XML") > 0,
        "a description with the event's reid and a name for each file", "no description");
}

Finding DescriptionFiles(const Run& run, const Limits& /*limits*/) {
    const Text expected = "at least one file for each event";
    if (run.emptyList.Any() && !run.hasFiles && !run.noFiles.Any()) {
        return Inconclusive(expected, kNoEventListed, run.emptyList);
    }
    if (run.switches.protocol == 1 && run.noFiles.Any() && run.hasFiles) {
        return Warn(expected,
                    Words("a description without files, which 1.0 allows: nothing of that event is exported",
                          run.noFiles),
                    run.noFiles);
    }
    const Tally none;
    const bool isWrong = run.Saw(log::Sign::EventReidWrong) || run.Saw(log::Sign::NoDescription) ||
                         run.Saw(log::Sign::EmptyDescription) || run.noEvent.Any();
    return NoneOf({{isWrong ? none : run.Of(log::Sign::EventWithoutFiles), "a description without files"},
                   {run.noFiles, "a description without files"},
                   {run.doubledFiles, "a description that names a file twice, which is then exported twice",
                    result::Verdict::Warning}},
                  run.Received("EVENT") + run.Received("XML") > 0, expected, "no description");
}

Finding FileAttributes(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(log::Sign::FileWithoutNames), "FILE_COMPLETE without reid or without file"}},
                  run.Received("FILE_COMPLETE") > 0, "reid and file in FILE_COMPLETE", "no FILE_COMPLETE");
}

Finding FileIdentity(const Run& run, const Limits& limits) {
    const Text expected = "each file completed once, in the order of the requests";
    const Tally unanswered = Unanswered(run, "GET_FILE", limits);
    const bool isOpen = !unanswered.Any() && IsWaiting(run, "GET_FILE");
    return NoneOf({{run.completedAgain, "a file completed twice"},
                   {run.refusedFiles, "INVALID_EVENT about a file that the event's description names"},
                   {run.otherFile, "FILE_COMPLETE about another file than the one asked for"},
                   {unanswered, "a file that was never completed"}},
                  run.Received("FILE_COMPLETE") > 0 && !isOpen, expected,
                  isOpen ? "the log ends before a file was complete" : "no file was asked for");
}

Finding AckReid(const Run& run, const Limits& limits) {
    const Tally unanswered = Unanswered(run, "EVENT_XFER_COMPLETE", limits);
    const bool isOpen = !unanswered.Any() && IsWaiting(run, "EVENT_XFER_COMPLETE");
    return NoneOf({{run.Of(log::Sign::AckWithoutReid), "EVENT_XFER_ACK without reid"},
                   {run.otherAck, "EVENT_XFER_ACK for another event than the one that was complete"},
                   {unanswered, "an event that was never acknowledged"}},
                  run.Received("EVENT_XFER_ACK") > 0 && !isOpen, "the event's reid in EVENT_XFER_ACK",
                  isOpen ? "the log ends before an event was acknowledged" : "no event was complete");
}

Finding ReportReid(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.reportWithoutReid, "the report of a fault without reid"},
                   {run.otherReid, "the report of a fault about another event than the request"}},
                  HasReports(run), "the reid of the request in each report of a fault", "no report");
}

Finding ExportDone(const Run& run, const Limits& limits) {
    const Text expected = "an export that ends with DONE";
    if (run.doneSent.Any() && !run.isExporting) {
        return Pass(expected, "DONE", run.Of(log::Sign::SendingDone));
    }
    if (!run.pending.empty() && IsUnanswered(run, run.pending.front(), limits)) {
        const Request& request = run.pending.front();
        const std::string where =
            request.mistake.empty()
                ? fmt::format("no {} came", request.expects)
                : fmt::format("the only {} was one that the harness ignores", request.expects);
        return Fail(expected,
                    fmt::format("the export stopped where {} ({})", where,
                                request.mistake.empty() ? run.AfterWhat().substr(2) : request.mistake),
                    run.Of(log::Sign::ShuttingDown));
    }
    return NotReached(expected, "the log ends before that");
}

}  // namespace

const std::vector<Check>& ExportChecks() {
    static const std::vector<Check> kChecks = {
        {"event-list.source", "EVENT_LIST names its source.",
         "\"'source' attribute missing from EVENT_LIST message\", the message itself", IsSecondDialect,
         EventListSource},
        {"event-list.events", "EVENT_LIST names every event.",
         "\"'event' found with no text\", \"could not find 'event' tag in EVENT_LIST message\", \"Got "
         "EVENT_LIST message with no events\", the list itself",
         IsSecondDialect, EventListEvents},
        {"event-list.once", "No event is listed twice.", "the identifiers in the list", IsExport, EventsOnce,
         Needs::OwnReading},
        {"event.reid", "The DVR describes each event that it lists, under the identifier asked for.",
         "\"Handle_EVENT_msg: 'reid' attribute incorrect: \", reid against the request; INVALID_EVENT to a "
         "request without a fault",
         IsSecondDialect, EventReid},
        {"event.description", "The description of an event is complete.",
         "\"EVENT message does not contain 'xmlFile' tag\", \"EVENT message 'xmlFile' tag does not contain "
         "data\", \"Escaped XML for event contains no REID\", \"Found event with no REID\", "
         "\"Handle_EVENT_msg: 'reid' in escaped XML incorrect: \", the description itself",
         IsExport, Description},
        {"event.files",
         "An event has files, each named once; in 1.0 one without is a warning if others have.",
         "\"Got EVENT message with no files to receive\", the description itself", IsExport, DescriptionFiles,
         Needs::OwnReading},
        {"file-complete.attributes", "FILE_COMPLETE names event and file.",
         "\"Got FILE_COMPLETE without both reid and file\"", IsExport, FileAttributes},
        {"file-complete.identity", "Every file requested is completed once, in order.",
         "\"invalid file in FILE_COMPLETE: \", FILE_COMPLETE and INVALID_EVENT against the requests",
         IsExport, FileIdentity, Needs::WholeLog},
        {"event-ack.reid", "Every event is acknowledged under its own identifier.",
         "\"Got EVENT_XFER_ACK with no reid attribute\", \"In EVENT_XFER_ACK, got unexpected reid: \", a "
         "report without its acknowledgement",
         IsSecondDialect, AckReid, Needs::WholeLog},
        {"fault-report.reid", "The report of a fault names the event of the request.",
         "\"'reid' attribute missing from \" INVALID_EVENT, TRANSPORT_EXCEPTION or XFER_IN_PROGRESS; "
         "\"'reid' attribute does not match expected: \"; reid against the request",
         ProvokesReports, ReportReid, Needs::WholeLog},
        {"export.done", "The export ends with DONE.", "\"Sending DONE\"", IsExport, ExportDone,
         Needs::WholeLog},
    };
    return kChecks;
}

}  // namespace rig::judge
