#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

constexpr Milliseconds kGap{20};  // so that the DVR reads each piece by itself

Script Bytewise(const Scene& scene) {
    Script script;
    for (const char byte : FrameOf(scene.text)) {
        script.push_back(Send(std::string(1, byte)));
        script.push_back(Wait(Milliseconds(5)));
    }
    return script;
}

Script Split(const Scene& scene) {
    const std::string frame = FrameOf(scene.text);
    const auto at = static_cast<std::size_t>(TimeOf(scene.value).count());
    if (at == 0 || at >= frame.size()) {
        return {};
    }
    return {Send(frame.substr(0, at)), Wait(kGap), Send(frame.substr(at))};
}

Script SplitAtRandom(const Scene& scene) {
    const std::string frame = FrameOf(scene.text);
    Script script;
    for (std::size_t at = 0; at < frame.size();) {
        const std::size_t piece = 1 + scene.random() % (frame.size() - at);
        script.push_back(Send(frame.substr(at, piece)));
        script.push_back(Wait(kGap));
        at += piece;
    }
    return script;
}

/// As the harness sends these two: one after the other, without waiting for an answer.
Script WithDone(const Scene& scene) {
    return {Send(FrameOf(scene.text) + FrameOf(Request(1, "DONE"))), Just(Act::Kind::LeaveOutNext)};
}

Script WithUpdate(const Scene& scene) {
    return {Send(FrameOf(Update()) + FrameOf(scene.text)), Take(kAnswerTime, 1, {"SOFTWARE_UPDATE_CONFIRM"})};
}

}  // namespace

// clang-format off
const std::vector<Fault>& PieceFaults() {
    static const char* const kGroup = "pieces";
    static const std::vector<Fault> faults = {
        {"bytewise", kGroup, Duty::GoesOn, "12", {}, {}, true,
         "sends each byte in a piece of its own", Bytewise},
        {"split", kGroup, Duty::GoesOn, "12", {}, {"1", "2", "3", "8", "16"}, false,
         "sends the message in two pieces, the first of so many bytes", Split},
        {"split-at-random", kGroup, Duty::GoesOn, "12", {}, {}, true,
         "sends the message in pieces of random length", SplitAtRandom},
        {"together-with-done", kGroup, Duty::GoesOn, "1", {"EVENT_XFER_COMPLETE"}, {}, false,
         "sends the message and DONE in one piece", WithDone},
        {"together-with-update", kGroup, Duty::GoesOn, "2", {"GET_EVENT_LIST"}, {}, false,
         "sends an UPDATE_SOFTWARE and the message in one piece", WithUpdate, 1},
    };
    return faults;
}
// clang-format on

}  // namespace rig::fault
