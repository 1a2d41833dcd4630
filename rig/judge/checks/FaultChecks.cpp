#include <fmt/format.h>

#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

/// @return whether what the harness asked for instead is there, too, so that nothing was wrong
bool IsGenuine(const FaultRecord& record) {
    return record.genuine.Any() && record.genuine.Count() == record.fired.Count();
}

Finding Fired(const Run& run, Fault fault) {
    if (IsGenuine(run.Of(fault))) {
        const Tally& genuine = run.Of(fault).genuine;
        return Inconclusive(
            kFired, Words("never injected: what is left of the name is another that the DVR lists", genuine),
            genuine);
    }
    if (run.Of(fault).fired.Any()) {
        return Pass(kFired, "injected", run.Of(fault).fired);
    }
    if (fault == Fault::Rehash && run.Saw(log::Sign::XferSwitch) && run.Saw(log::Sign::RehashFault)) {
        return NotInjected(run, "with -r and -x together the request with rehash=\"true\" does not go out");
    }
    const bool isFileFault = fault != Fault::Event && fault != Fault::Pause;
    if (isFileFault && run.Received("EVENT") > 0 && !run.hasLargeEvent) {
        return NotInjected(run, "no event had two files or more");
    }
    return NotInjected(run, "the dialogue did not come to it");
}

template <Fault fault>
Finding FiredOf(const Run& run, const Limits& /*limits*/) {
    return Fired(run, fault);
}

Finding Answered(const Run& run, Fault fault, const Text& expected, const Limits& limits) {
    const FaultRecord& record = run.Of(fault);
    if (!record.fired.Any() || IsGenuine(record)) {
        return NotReached(expected, "the fault was never injected");
    }
    if (record.wrong.Any()) {
        return Fail(expected, Words("an answer as if nothing were wrong", record.wrong), record.wrong);
    }
    if (record.otherReport.Any()) {
        return Fail(expected, Words("the report of another fault", record.otherReport), record.otherReport);
    }
    if (record.answered.Any()) {
        return Pass(expected, "it came", record.answered);
    }
    for (const Request& request : run.pending) {
        if (request.fault == fault && IsUnanswered(run, request, limits)) {
            return Fail(expected, NothingOfTheKind(run, request), record.fired);
        }
    }
    return NotReached(expected, "the log ends before an answer came");
}

Finding EventAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Event, "INVALID_EVENT to the damaged identifier", limits);
}
Finding FileEventAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::FileEvent, "INVALID_EVENT to the file of a damaged identifier", limits);
}
Finding FileNameAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::FileName, "INVALID_EVENT to the damaged file name", limits);
}
Finding TransportFired(const Run& run, const Limits& /*limits*/) {
    return run.markerFailures.Any() ? NotInjected(run, "the failure marker could not be made")
                                    : Fired(run, Fault::Transport);
}
Finding TransportAnswered(const Run& run, const Limits& limits) {
    if (run.markerFailures.Any()) {
        return NotReached("TRANSPORT_EXCEPTION while the failure marker exists", "the marker never existed");
    }
    return Answered(run, Fault::Transport, "TRANSPORT_EXCEPTION while the failure marker exists", limits);
}
Finding XferAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Xfer, "XFER_IN_PROGRESS to the second of two requests", limits);
}
Finding PauseFired(const Run& run, const Limits& /*limits*/) {
    return run.Of(Fault::Pause).fired.Any() || run.Received("EVENT") == 0
               ? Fired(run, Fault::Pause)
               : NotInjected(run, "no event had three files or more");
}
Finding PauseAnswered(const Run& run, const Limits& limits) {
    return Answered(run, Fault::Pause, "an export that goes on after the harness's pauses", limits);
}

Finding RehashAttributes(const Run& run, const Limits& /*limits*/) {
    if (!run.Of(Fault::Rehash).fired.Any()) {
        return NotReached("hashCode and length when a new hash is asked for", "it was never asked for");
    }
    return NoneOf({{run.Of(log::Sign::NoHash), "an answer without hashCode"},
                   {run.Of(log::Sign::NoLength), "an answer without length"},
                   {run.emptyHash, "an answer with an empty hashCode"},
                   {run.emptyLength, "an answer with an empty length"}},
                  run.Saw(log::Sign::SameHash) || run.Saw(log::Sign::NewHash),
                  "hashCode and length when a new hash is asked for", "no answer");
}
Finding RehashSame(const Run& run, const Limits& /*limits*/) {
    const Text expected = "the same hash, or a report that it is a new one";
    if (!run.Of(Fault::Rehash).fired.Any()) {
        return NotReached(expected, "a new hash was never asked for");
    }
    if (run.emptyHash.Any()) {
        return NotReached(expected, "no two hashes to compare");
    }
    if (run.Saw(log::Sign::NewHash)) {
        return Inconclusive(expected,
                            "a new hash, reported as one: right if the recording changed, or its old hash "
                            "was wrong; the DVR's fault if neither, which the log cannot tell",
                            run.Of(log::Sign::NewHash));
    }
    return run.Saw(log::Sign::SameHash) ? Pass(expected, "the same hash", run.Of(log::Sign::SameHash))
                                        : NotReached(expected, "no two hashes to compare");
}

}  // namespace

const std::vector<Check>& FaultChecks() {
    static const std::vector<Check> kChecks = {
        {"invalid-event.fired", kFiredSentence,
         "\"processing 'invalidEvent' option [event]\", and the request that follows",
         With<log::Sign::EventSwitch>, FiredOf<Fault::Event>},
        {"invalid-event.answer", "The DVR refuses an event that it does not have.",
         "INVALID_EVENT, or EVENT instead, as the next answer", With<log::Sign::EventSwitch>, EventAnswered,
         Needs::WholeLog},
        {"invalid-file.fired-event", kFiredSentence,
         "\"processing 'invalidFile' option, cnt=\", the first time", With<log::Sign::FileSwitch>,
         FiredOf<Fault::FileEvent>},
        {"invalid-file.answer-event", "The DVR refuses a file of an event that it does not have.",
         "INVALID_EVENT, or FILE_COMPLETE instead, as the next answer", With<log::Sign::FileSwitch>,
         FileEventAnswered, Needs::WholeLog},
        {"invalid-file.fired-name", kFiredSentence,
         "\"processing 'invalidFile' option, cnt=\", the second time", With<log::Sign::FileSwitch>,
         FiredOf<Fault::FileName>},
        {"invalid-file.answer-name", "The DVR refuses a file that it does not have.",
         "INVALID_EVENT, or FILE_COMPLETE instead, as the next answer", With<log::Sign::FileSwitch>,
         FileNameAnswered, Needs::WholeLog},
        {"transport.fired", kFiredSentence,
         "\"processing 'transportException' option\"; the shell's complaint where the marker cannot be made",
         With<log::Sign::TransportSwitch>, TransportFired},
        {"transport.answer", "The DVR reports a transfer that fails.",
         "TRANSPORT_EXCEPTION, or FILE_COMPLETE instead, as the next answer",
         With<log::Sign::TransportSwitch>, TransportAnswered, Needs::WholeLog},
        {"rehash.fired", kFiredSentence, "\"processing 'rehash' option\", and the request that follows",
         With<log::Sign::RehashSwitch>, FiredOf<Fault::Rehash>},
        {"rehash.attributes", "The DVR gives hash and length when a new hash is asked for.",
         "\"'hashCode' attribute not present when requested\", \"'length' attribute not present when "
         "requested\", the answer itself",
         With<log::Sign::RehashSwitch>, RehashAttributes},
        {"rehash.same-hash", "A recomputed hash equals the old one, or is reported as new.",
         "\"rehash resulted in same hash: \", \"rehash resulted in new hash: \"",
         With<log::Sign::RehashSwitch>, RehashSame},
        {"xfer.fired", kFiredSentence, "\"processing 'xferInProgress' option\"", With<log::Sign::XferSwitch>,
         FiredOf<Fault::Xfer>},
        {"xfer.answer", "The DVR says that the file asked for again is in transfer.",
         "XFER_IN_PROGRESS to the second request", With<log::Sign::XferSwitch>, XferAnswered,
         Needs::WholeLog},
        {"sleep.fired", kFiredSentence,
         "a request with files left after it, in an event of three files or more",
         With<log::Sign::SleepSwitch>, PauseFired},
        {"sleep.answer", "The DVR tolerates pauses between requests.", "the answer after the pause",
         With<log::Sign::SleepSwitch>, PauseAnswered, Needs::WholeLog},
    };
    return kChecks;
}

}  // namespace rig::judge
