#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "rig/base/Affix.h"
#include "rig/dvr/weaknesses/Weakness.h"

namespace rig::dvr {
namespace {

WeaknessKind InRefused(const char* name, const char* dialects, Reaction reaction, const char* does,
                       const char* shownBy, bool (*isSo)(const Message& request, const Recordings& there),
                       Message (*answer)(const Message& request, const Recordings& there) = nullptr) {
    WeaknessKind kind{name, dialects, reaction, does, shownBy};
    kind.inRefused = isSo;
    kind.answer = answer;
    return kind;
}

/// @return the event that a request is about; in 1.0 `path` carries it
std::string EventOf(const Message& request) {
    return request.Find("reid") ? request.Get("reid") : request.Get("path");
}

Message AnswerOf(const char* name, const Message& request) {
    Message answer(name);
    const auto version = request.Find("protocolVersion");
    if (version) {
        answer.Set("protocolVersion", *version);
    }
    return answer;
}

/// As if the file had been transferred. Nothing is read.
Message Complete(const Message& request, const Recordings&) {
    return std::move(AnswerOf("FILE_COMPLETE", request)
                         .Set("reid", EventOf(request))
                         .Set("file", request.Get("file"))
                         .Set("length", "0")
                         .Set("hashCode", "0"));
}

Message Acknowledge(const Message& request, const Recordings&) {
    return std::move(AnswerOf("EVENT_XFER_ACK", request).Set("reid", EventOf(request)));
}

Message Confirm(const Message& request, const Recordings&) {
    return AnswerOf("SOFTWARE_UPDATE_CONFIRM", request);
}

bool LeadsUp(const Message& request, const Recordings&) {
    const std::string path = EventOf(request) + "/" + request.Get("file");
    return request.Name() == "GET_FILE" && path.find("../") != std::string::npos;
}

bool IsAbsolute(const Message& request, const Recordings&) {
    return request.Name() == "GET_FILE" &&
           (StartsWith(EventOf(request), "/") || StartsWith(request.Get("file"), "/"));
}

/// A file that some event has.
bool IsOfOtherEvent(const Message& request, const Recordings& there) {
    const std::vector<std::string>& events = there.Events();
    return request.Name() == "GET_FILE" && there.Has(EventOf(request)) &&
           std::any_of(events.begin(), events.end(), [&](const std::string& event) {
               const std::vector<std::string> files = there.Find(event).Files();
               return std::find(files.begin(), files.end(), request.Get("file")) != files.end();
           });
}

bool IsComplete(const Message& request, const Recordings&) {
    return request.Name() == "EVENT_XFER_COMPLETE";
}

bool IsUpdate(const Message& request, const Recordings&) {
    return request.Name() == "UPDATE_SOFTWARE";
}

bool IsDone(const Message& request, const Recordings&) {
    return request.Name() == "DONE";
}

bool IsList(const Message& request, const Recordings&) {
    return request.Name() == "GET_EVENT_LIST" || request.Name() == "GET_XML";
}

}  // namespace

const std::vector<WeaknessKind>& OrderWeaknesses() {
    static const std::vector<WeaknessKind> kinds = {
        InRefused("follows-dot-dot", "12", Reaction::Answer,
                  "follows ../ in a name, and transfers the file there", "asks for such a file", LeadsUp,
                  Complete),
        InRefused("absolute-names", "12", Reaction::Answer,
                  "takes a name that begins with / for a file of its system, and transfers it",
                  "asks for such a file", IsAbsolute, Complete),
        InRefused("other-event", "2", Reaction::Answer, "transfers files of an event that is not in progress",
                  "asks for a file of another event", IsOfOtherEvent, Complete),
        InRefused("acknowledges-all", "2", Reaction::Answer, "acknowledges any event at any time",
                  "says too early that an event is complete, or names another one", IsComplete, Acknowledge),
        InRefused("updates-again", "2", Reaction::Answer, "obeys each order for a software update",
                  "orders a second update", IsUpdate, Confirm),
        InRefused("obeys-done", "12", Reaction::GiveUp, "obeys DONE at any time, and then never calls again",
                  "sends DONE in mid-export", IsDone),
        InRefused("one-list", "12", Reaction::Abort, "frees its list when it makes another, and aborts",
                  "asks for the list in mid-export", IsList),
    };
    return kinds;
}

}  // namespace rig::dvr
