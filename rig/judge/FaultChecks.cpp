#include <fmt/format.h>

#include "rig/judge/Checks.h"
#include "rig/judge/Findings.h"

namespace rig::judge {
namespace {

constexpr const char* kFiredSentence = "The fault that the switch asks for was really injected.";
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

}  // namespace

const std::vector<Check>& FaultChecks() {
    static const std::vector<Check> kChecks = {
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
    };
    return kChecks;
}

}  // namespace rig::judge
