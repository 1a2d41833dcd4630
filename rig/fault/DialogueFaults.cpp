#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

using Kind = Act::Kind;

const char* const kMadeUp = "no-such-event";

/// A request for a file of an event, in either dialect.
std::string GetFile(int dialect, const std::string& event, const std::string& file) {
    return dialect == 1 ? Request(1, "GET_FILE", {{"path", event}, {"file", file}})
                        : Request(2, "GET_FILE", {{"reid", event}, {"path", event}, {"file", file}});
}

std::string Configuration(int dialect, const std::string& value) {
    return Request(dialect, "UPDATE_CONFIGURATION", {{dialect == 1 ? "txt" : "message", value}});
}

Script Unknown(const Scene& scene) {
    return Ask(scene, Request(scene.dialect, scene.value, {{"reid", kMadeUp}}));
}

Script WithoutRequest(const Scene& scene) {
    return Ask(scene, Without(scene.text, "req"));
}

Script EmptyRequest(const Scene& scene) {
    return Ask(scene, With(scene.text, "req", ""));
}

/// What the harness does with -x: the DVR has the file in transfer.
Script RepeatFile(const Scene& scene) {
    const std::string frame = FrameOf(scene.text);
    return {Send(frame + frame), Take(kSilenceTime, 1, {"XFER_IN_PROGRESS"})};
}

Script RepeatOther(const Scene& scene) {
    return Ask(scene, scene.text);
}

Script LeaveOut(const Scene&) {
    constexpr Milliseconds kLongEnough{2000};
    return {Take(kLongEnough), Just(Kind::Close)};
}

Script Flood(const Scene& scene) {
    constexpr int kRequests = 1000;
    std::string flood;
    for (int count = 0; count < kRequests; ++count) {
        flood += FrameOf(GetFile(scene.dialect, kMadeUp, "no-such-file"));
    }
    return {Send(flood), Take(kSilenceTime, kRequests), Send(FrameOf(scene.text))};
}

Script AskDoneEvent(const Scene& scene) {
    return Ask(scene, GetFile(scene.dialect, kMadeUp, "no-such-file"));
}

Script FileOfOtherEvent(const Scene& scene) {
    if (scene.event.empty()) {
        return {};
    }
    return Ask(scene, With(With(scene.text, "reid", scene.event), "path", scene.event), kAnswerTime);
}

Script BeforeList(const Scene& scene) {
    return Ask(scene, scene.value == "GET_FILE" ? GetFile(scene.dialect, kMadeUp, "no-such-file")
                                                : Request(scene.dialect, scene.value, {{"reid", kMadeUp}}));
}

/// The answer to the request itself still goes to the harness.
Script WhileTransferring(const Scene& scene) {
    const std::string other = scene.value == "UPDATE_CONFIGURATION" ? Configuration(scene.dialect, "<a/>")
                              : scene.value == "GET_EVENT_LIST" || scene.value == "GET_XML"
                                  ? Request(scene.dialect, scene.value)
                                  : Request(scene.dialect, scene.value, {{"reid", kMadeUp}});
    return {Send(FrameOf(scene.text) + FrameOf(other)),
            Take(kSilenceTime, 1,
                 {"CONFIGURATION_UPDATE_ERROR", "EVENT_LIST", "XML", "EVENT", "INVALID_EVENT",
                  "EVENT_XFER_ACK"})};
}

Script Done(const Scene& scene) {
    return BreakOff(FrameOf(Request(scene.dialect, "DONE")));
}

Script DoneInTransfer(const Scene& scene) {
    return BreakOff(FrameOf(scene.text) + FrameOf(Request(scene.dialect, "DONE")));
}

Script DoneTwice(const Scene& scene) {
    const std::string frame = FrameOf(scene.text);
    return {Send(frame + frame)};
}

Script CompleteEarly(const Scene& scene) {
    const std::string event = Get(scene.text, "reid");
    return Ask(scene, Request(2, "EVENT_XFER_COMPLETE", {{"reid", event}}));
}

Script CompleteOther(const Scene& scene) {
    return Ask(scene, With(scene.text, "reid", scene.event.empty() ? kMadeUp : scene.event));
}

Script UpdateInExport(const Scene& scene) {
    return Ask(scene, Update());
}

Script UpdateTwice(const Scene& scene) {
    const std::string frame = FrameOf(Update());
    return {Send(frame + frame), Take(kSilenceTime, 2), Send(FrameOf(scene.text))};
}

Script LargeConfiguration(const Scene& scene) {
    constexpr std::size_t kBytes = 1'000'000;
    return Ask(scene, Configuration(scene.dialect, "<a>" + std::string(kBytes, 'x') + "</a>"), kAnswerTime);
}

}  // namespace

// clang-format off
const std::vector<Fault>& DialogueFaults() {
    static const char* const kGroup = "dialogue";
    static const std::vector<Fault> faults = {
        {"unknown-request", kGroup, Duty::Survives, "12", {}, {"FORMAT_DISK", "get_file", "OK"}, false,
         "first sends a request of that name", Unknown},
        {"no-request", kGroup, Duty::Survives, "12", {}, {}, false,
         "first sends the message without req", WithoutRequest},
        {"empty-request", kGroup, Duty::Survives, "12", {}, {}, false,
         "first sends the message with an empty req", EmptyRequest},
        {"repeat-file", kGroup, Duty::Refuses, "2", {"GET_FILE"}, {}, false,
         "sends the request twice in one piece: the file is in transfer", RepeatFile},
        {"repeat", kGroup, Duty::Survives, "12",
         {"GET_XML", "GET_EVENT_LIST", "NEXT_EVENT", "EVENT_XFER_COMPLETE"}, {}, false,
         "sends the message, takes the answer off, and sends it again", RepeatOther},
        {"leave-out", kGroup, Duty::Survives, "12", {}, {}, false,
         "does not send the message, and closes after 2 s", LeaveOut},
        {"flood", kGroup, Duty::Survives, "12", {}, {}, false,
         "first sends 1,000 requests for a file that does not exist", Flood},
        {"file-of-unknown-event", kGroup, Duty::Refuses, "12", {"GET_FILE", "EVENT_XFER_COMPLETE"}, {}, false,
         "first asks for a file of an event that the DVR does not have", AskDoneEvent},
        {"file-of-other-event", kGroup, Duty::Refuses, "2", {"GET_FILE"}, {}, false,
         "first asks for the file of an event that is not in progress", FileOfOtherEvent},
        {"before-list", kGroup, Duty::Survives, "12", {"GET_XML", "GET_EVENT_LIST"},
         {"GET_FILE", "NEXT_EVENT", "EVENT_XFER_COMPLETE"}, false,
         "asks for this before the list", BeforeList},
        {"while-transferring", kGroup, Duty::Survives, "12", {"GET_FILE"},
         {"NEXT_EVENT", "GET_EVENT_LIST", "GET_XML", "EVENT_XFER_COMPLETE", "UPDATE_CONFIGURATION"}, false,
         "sends this right after the request for a file", WhileTransferring},
        {"done-early", kGroup, Duty::Survives, "12",
         {"GET_XML", "GET_EVENT_LIST", "NEXT_EVENT", "GET_FILE", "EVENT_XFER_COMPLETE"}, {}, false,
         "sends DONE in place of the message, and closes after 1.5 s", Done},
        {"done-in-transfer", kGroup, Duty::Survives, "12", {"GET_FILE"}, {}, false,
         "sends DONE right after the request for a file, and closes after 1.5 s", DoneInTransfer},
        {"done-twice", kGroup, Duty::GoesOn, "12", {"DONE"}, {}, false,
         "sends DONE twice in one piece", DoneTwice},
        {"complete-early", kGroup, Duty::Refuses, "2", {"GET_FILE"}, {}, false,
         "says that the event is complete before it has all of its files", CompleteEarly},
        {"complete-other", kGroup, Duty::Refuses, "2", {"EVENT_XFER_COMPLETE"}, {}, false,
         "first says that another event is complete", CompleteOther},
        {"update-in-export", kGroup, Duty::Survives, "2", {"NEXT_EVENT", "GET_FILE", "EVENT_XFER_COMPLETE"}, {}, false,
         "orders a software update in mid-export", UpdateInExport},
        {"update-twice", kGroup, Duty::Refuses, "2", {"GET_EVENT_LIST"}, {}, false,
         "orders a software update twice in one piece", UpdateTwice, 1},
        {"large-configuration", kGroup, Duty::Survives, "12", {}, {}, false,
         "first sends a configuration of 1 MB", LargeConfiguration},
    };
    return faults;
}
// clang-format on

}  // namespace rig::fault
