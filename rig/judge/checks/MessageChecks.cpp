#include <fmt/format.h>

#include <algorithm>

#include "rig/judge/Findings.h"
#include "rig/judge/checks/Checks.h"

namespace rig::judge {
namespace {

Finding MessagesFramed(const Run& run, const Limits& limits) {
    return NoneOf(
        {{run.Of(log::Sign::BadPrefix), "a length prefix that goes on after its fifth byte"},
         {run.badLength, "a length prefix of 2 GiB or more"},
         {run.wrongPrefix, "a length prefix that is not the length of the text after it"},
         {Stalled(run, limits), "a message that does not come to the end that its length prefix announces"}},
        run.Saw(log::Sign::Expecting), "a length prefix of at most 5 bytes before every message",
        "no message");
}

Finding MessagesParsed(const Run& run, const Limits& /*limits*/) {
    static const Tally kNone;
    return NoneOf({{run.noMessage, "a document without the element msg, for which the harness aborts"},
                   {run.empty, "a message without text, for which the harness aborts"},
                   {run.brokenOff,
                    "a message that breaks off, is garbled, or whose length prefix announces less than was "
                    "sent, for which the harness aborts"},
                   {run.Of(log::Sign::NotXml),
                    "a message, or a description in one, that is not XML, for which the harness aborts"},
                   {run.EndedByMessage() ? run.deadlyMessages : kNone,
                    "a message that the harness cannot take: an exception ends it"},
                   {run.notWellFormed, "a message, or a description in one, that is not well-formed XML"},
                   {run.Of(log::Sign::NoRequest), "a message without req, which the harness ignores"},
                   {run.terminated,
                    "a message whose length counts a NUL after the text: the harness stops reading there, "
                    "but few parsers do",
                    result::Verdict::Warning},
                   {run.otherEncoding,
                    "a message with bytes that are not of its encoding, which is UTF-8 where it declares "
                    "none: the harness takes them as they are, but few parsers do",
                    result::Verdict::Warning}},
                  run.Saw(log::Sign::Incoming), "one XML document msg with req in every message",
                  "no message");
}

Finding MessagesKnown(const Run& run, const Limits& /*limits*/) {
    return NoneOf({{run.Of(log::Sign::UnknownMessage), "a message that this dialect does not know"}},
                  run.Saw(log::Sign::Incoming), "messages of the dialect only", "no message");
}

/// A DVR that tells of its transfers elsewhere, too, has not sent an answer twice.
Finding MessagesAsked(const Run& run, const Limits& /*limits*/) {
    static const Tally kNone;
    return NoneOf({{run.notAsked, "a message that nothing asked for"},
                   {run.progress.Any() ? kNone : run.doubledProgress, "a message that nothing asked for"},
                   {run.Of(log::Sign::UnexpectedAnswer), "an answer to a request that was never made"},
                   {run.progress,
                    "XFER_IN_PROGRESS about a file that was not asked for again: legal while it "
                    "is in transfer, but only the harness is known to take it",
                    result::Verdict::Warning}},
                  !run.received.empty(), "every message answers a request that waits for it", "no message");
}

std::string HowUnanswered(const Run& run, const Request& request) {
    const std::string pair = fmt::format("{} to {}", request.expects, request.name);
    if (!request.mistake.empty()) {
        return "the only " + pair + " is one that the harness ignores";
    }
    if (run.Saw(log::Sign::UnknownMessage)) {
        return "no " + pair + ": the DVR sent another message, or one that the dialect does not know";
    }
    if (run.announcement.isOpen) {
        return "no " + pair + ": the DVR began a message and did not end it";
    }
    const bool couldClose = !request.isOvertaken && !run.Saw(log::Sign::PrefixReadError);
    return "no " + pair + ": the DVR sent none" +
           (couldClose ? ", or closed the connection, which leaves no line in the log" : "");
}

Finding RequestsAnswered(const Run& run, const Limits& limits) {
    const Text expected = "an answer to every request";
    const Tally unanswered = Unanswered(run, "", limits);
    if (unanswered.Any()) {
        const auto first = std::find_if(
            run.pending.begin(), run.pending.end(),
            [&run, &limits](const Request& request) { return IsUnanswered(run, request, limits); });
        return Fail(expected, Words(HowUnanswered(run, *first), unanswered), unanswered);
    }
    if (!run.pending.empty() && run.HarnessEnded()) {
        return NotReached(expected,
                          fmt::format("the harness had aborted before {}", run.pending.front().expects));
    }
    if (!run.pending.empty()) {
        return Inconclusive(expected, fmt::format("the log ends too soon to tell whether {} would have come",
                                                  run.pending.front().expects));
    }
    return run.received.empty() ? NotReached(expected, "no request") : Pass(expected, "an answer to each");
}

}  // namespace

const std::vector<Check>& MessageChecks() {
    static const std::vector<Check> kChecks = {
        {"messages.framed", "Every message has a good length prefix.",
         "\"Read7BitEncodedInt:badly formatted 7 bit string length prefix\", a negative length announced, a "
         "length announced that does not come, the text itself",
         Always, MessagesFramed},
        {"messages.parsed", "Every message is an XML document with msg and req.",
         "\"error: \", \"INVALID XML RECEIVED\", the assertions on the parser, the message itself", Always,
         MessagesParsed},
        {"messages.known", "Every message is one of the dialect's.", "\"UNSUPPORTED MSG RECEIVED: \"", Always,
         MessagesKnown},
        {"messages.asked",
         "The DVR sends only what it is asked for, once; word of a transfer that goes on is a warning.",
         "messages against the requests before them; \"Unexpected \"", AsksWhole, MessagesAsked,
         Needs::WholeLog},
        {"requests.answered", "The DVR answers every request.",
         "a request without its answer, with more than --patience to the end of the log", AsksWhole,
         RequestsAnswered, Needs::WholeLog},
    };
    return kChecks;
}

}  // namespace rig::judge
