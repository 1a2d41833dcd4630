#include <fmt/format.h>

#include "rig/judge/Checks.h"
#include "rig/judge/Findings.h"

namespace rig::judge {
namespace {

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

}  // namespace

const std::vector<Check>& MessageChecks() {
    static const std::vector<Check> kChecks = {
        {"messages.framed", "Every message has a good length prefix.", Always, MessagesFramed},
        {"messages.parsed", "Every message is an XML document with msg and req.", Always, MessagesParsed},
        {"messages.known", "Every message is one of the dialect's.", Always, MessagesKnown},
        {"messages.asked", "The DVR sends only what it is asked for, once.", AsksWhole, MessagesAsked},
        {"requests.answered", "The DVR answers every request.", AsksWhole, RequestsAnswered},
    };
    return kChecks;
}

}  // namespace rig::judge
