#include <fmt/format.h>

#include <algorithm>

#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

constexpr double kMinute = 60;  // seconds

/// With -z the DVR must not answer: see size.answer.
template <log::Sign sign>
bool WithWhole(const Run& run) {
    return With<sign>(run) && AsksWhole(run);
}

Finding AnsweredBy(const Run& run, const Limits& limits, const char* answer, const char* request,
                   const Text& expected) {
    if (run.Received(answer) > 0) {
        return Pass(expected, "it came", run.received.at(answer));
    }
    for (const Request& waiting : run.pending) {
        if (waiting.name == request && IsUnanswered(run, waiting, limits)) {
            return Fail(expected, NothingOfTheKind(run, waiting), run.Of(log::Sign::Opening));
        }
    }
    return NotReached(expected, "the log ends before an answer came");
}

Finding UpgradeFired(const Run& run, const Limits& /*limits*/) {
    for (const result::Evidence& line : run.Of(log::Sign::Opening).Lines()) {
        if (line.text.find("UPDATE_SOFTWARE") != std::string::npos) {
            return Pass(kFired, "UPDATE_SOFTWARE went out", run.Of(log::Sign::Opening));
        }
    }
    return NotInjected(run, "the dialogue did not come to it");
}
Finding UpgradeAnswered(const Run& run, const Limits& limits) {
    return AnsweredBy(run, limits, "SOFTWARE_UPDATE_CONFIRM", "UPDATE_SOFTWARE",
                      "SOFTWARE_UPDATE_CONFIRM to UPDATE_SOFTWARE");
}

Finding ConfigFired(const Run& run, const Limits& /*limits*/) {
    return run.Saw(log::Sign::Opening)
               ? Pass(kFired, "UPDATE_CONFIGURATION went out", run.Of(log::Sign::Opening))
               : Inconclusive(kFired, "never injected: the dialogue did not come to it");
}
Finding ConfigAnswered(const Run& run, const Limits& limits) {
    return AnsweredBy(run, limits, "CONFIGURATION_UPDATE_ERROR", "UPDATE_CONFIGURATION",
                      "CONFIGURATION_UPDATE_ERROR to the bogus configuration");
}

Finding SizeFired(const Run& run, const Limits& /*limits*/) {
    return run.Saw(log::Sign::SentWrongSize)
               ? Pass(kFired, "frames with a wrong prefix went out", run.Of(log::Sign::SentWrongSize))
               : Inconclusive(kFired, "never injected: no frame went out");
}
Finding SizeAnswered(const Run& run, const Limits& limits) {
    const Text expected = "no message after a frame that is shorter than its prefix says";
    if (!run.Saw(log::Sign::SentWrongSize)) {
        return NotReached(expected, "no frame went out");
    }
    if (run.openedAgain.Any()) {
        return Fail(expected, Words("another OK on the same connection", run.openedAgain), run.openedAgain);
    }
    if (run.answeredWrong.Any()) {
        return Fail(expected, Words("a message as if the frame were whole", run.answeredWrong),
                    run.answeredWrong);
    }
    const bool waited = !run.pending.empty() && IsUnanswered(run, run.pending.front(), limits);
    return waited ? Pass(expected, "no answer")
                  : Inconclusive(expected, "the log ends too soon to tell whether an answer would have come");
}

Finding CloseFired(const Run& run, const Limits& /*limits*/) {
    if (run.switches.protocol == 1 || !run.doneSent.Any()) {
        return NotInjected(run, "the dialogue did not come to it");
    }
    const bool isEarly = run.acksAtDone == static_cast<std::uint64_t>(run.switches.closeEarly);
    return isEarly ? Pass(kFired, "DONE went out early", run.Of(log::Sign::SendingDone))
                   : Inconclusive(kFired, fmt::format("never injected: DONE came after {} acknowledgements, "
                                                      "when no event was left; -c asks for {}",
                                                      run.acksAtDone, run.switches.closeEarly));
}
Finding CloseAnswered(const Run& run, const Limits& limits) {
    const Text expected =
        fmt::format("{} acknowledgements, then DONE, then nothing of this export", run.switches.closeEarly);
    if (CloseFired(run, limits).verdict != result::Verdict::Pass) {
        return NotReached(expected, "the export was not closed early");
    }
    return NoneOf({{run.afterDone, "a message after DONE"}}, true, expected, "");
}

Finding DurationFired(const Run& run, const Limits& /*limits*/) {
    return run.doneSent.Any() && run.switches.protocol == 2
               ? Pass(kFired, "DONE with a duration went out", run.Of(log::Sign::SendingDone))
               : NotInjected(run, "the dialogue did not come to DONE");
}

/// @return the seconds from DONE until the DVR called again, as the log or the rig has it
std::optional<double> CalledAfter(const Run& run, const Limits& limits) {
    std::optional<double> called = limits.after.calledAfter;
    if (run.resumed) {
        const double seconds = static_cast<double>(*run.resumed) / 1e6;
        called = std::min(called.value_or(seconds), seconds);
    }
    return called;
}

/// @return the seconds from DONE for which a call would have shown. Without -c the harness goes on reading
/// from the connection, and does not see another once the DVR has closed that.
double WatchedFor(const Run& run, const Limits& limits) {
    const bool isSeen = run.Saw(log::Sign::ClosingClient) && run.endTime && run.doneTime;
    const double logged = isSeen ? static_cast<double>(*run.endTime - *run.doneTime) / 1e6 : 0;
    return std::max(limits.after.watchedFor, logged);
}

Finding NotWatched(const Text& expected, const Run& run, double watched) {
    if (run.assertions.Any()) {
        return Inconclusive(expected, "the DVR connected again; when, the log does not tell", run.assertions);
    }
    return run.Saw(log::Sign::ClosingClient) || watched > 0
               ? Inconclusive(
                     expected,
                     fmt::format("no call, but nobody watched for long enough (for {:.1f} s)", watched))
               : Inconclusive(expected,
                              "without -c the harness does not see a call after the DVR has closed its "
                              "connection, and nobody else watched");
}

Finding DurationAnswered(const Run& run, const Limits& limits) {
    const Text expected = fmt::format("no call of the DVR for {} min after DONE", run.switches.doneDuration);
    if (!run.doneSent.Any() || run.switches.protocol == 1) {
        return NotReached(expected,
                          run.switches.protocol == 1 ? "protocol 1.0 does not heed this switch" : "no DONE");
    }
    if (run.afterDone.Any()) {
        return Fail(expected, Words("a message after DONE", run.afterDone), run.afterDone);
    }
    const double asked = static_cast<double>(run.switches.doneDuration) * kMinute;
    const Tally& proof = run.resumedAt.Any() ? run.resumedAt : run.Of(log::Sign::SendingDone);
    if (const auto called = CalledAfter(run, limits)) {
        const std::string times = fmt::format("(after {:.1f} s, not {:.0f} s)", *called, asked);
        return *called < asked
                   ? Fail(expected, "the DVR connected again before the time was over " + times, proof)
                   : Pass(expected, fmt::format("it called after {:.1f} s", *called), proof);
    }
    const double watched = WatchedFor(run, limits);
    return watched < asked ? NotWatched(expected, run, watched)
                           : Pass(expected, fmt::format("no call for {:.1f} s", watched), proof);
}

}  // namespace

const std::vector<Check>& SwitchChecks() {
    static const std::vector<Check> kChecks = {
        {"upgrade.fired", kFiredSentence, "\"got an OK, sending UPDATE_SOFTWARE\"",
         With<log::Sign::UpgradeSwitch>, UpgradeFired},
        {"upgrade.answer", "The DVR confirms a software update.", "SOFTWARE_UPDATE_CONFIRM",
         WithWhole<log::Sign::UpgradeSwitch>, UpgradeAnswered, Needs::WholeLog},
        {"config.fired", kFiredSentence, "\"got an OK, sending CONFIGURATION_UPDATE\"",
         With<log::Sign::ConfigSwitch>, ConfigFired},
        {"config.answer", "The DVR refuses a bogus configuration.", "CONFIGURATION_UPDATE_ERROR",
         WithWhole<log::Sign::ConfigSwitch>, ConfigAnswered, Needs::WholeLog},
        {"size.fired", kFiredSentence, "\"sent: size= \"", With<log::Sign::SizeSwitch>, SizeFired},
        {"size.answer", "The DVR sends no message after a frame that is too short.",
         "a message of the DVR after a frame that is too short", With<log::Sign::SizeSwitch>, SizeAnswered,
         Needs::WholeLog},
        {"close.fired", kFiredSentence,
         "\"Sending DONE\" after as many acknowledgements as \"closeEarly set to \" says",
         With<log::Sign::CloseSwitch>, CloseFired},
        {"close.answer", "The DVR ends its export when DONE comes early.", "messages after \"Sending DONE\"",
         With<log::Sign::CloseSwitch>, CloseAnswered, Needs::WholeLog},
        {"duration.fired", kFiredSentence, "\"Sending DONE\" with \"doneDuration set to \" at the start",
         With<log::Sign::DurationSwitch>, DurationFired},
        {"duration.answer", "The DVR stays away as long as DONE says.",
         "the next message after \"Sending DONE\", by its time; with -c that none comes for so long; what "
         "the "
         "rig saw",
         With<log::Sign::DurationSwitch>, DurationAnswered, Needs::WholeLog},
    };
    return kChecks;
}

}  // namespace rig::judge
