#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

using Kind = Act::Kind;

constexpr std::size_t kTenthsOfASecond = 10;
constexpr Milliseconds kTenth{100};

/// The message with blanks in its tag, so that its prefix has two bytes.
std::string Padded(std::string text) {
    constexpr std::size_t kShortestOfTwo = 128;
    const std::size_t end = text.find('>');
    const std::size_t at = end > 0 && text[end - 1] == '/' ? end - 1 : end;
    return text.insert(at, text.size() < kShortestOfTwo ? kShortestOfTwo - text.size() : 0, ' ');
}

/// @return how many bytes of the frame come before the place
std::size_t PlaceIn(const std::string& frame, const std::string& place) {
    if (place == "before") {
        return 0;
    }
    return place == "in-prefix" ? 1 : place == "in-text" ? frame.size() / 2 : frame.size();
}

Script Latency(const Scene& scene) {
    return {Wait(TimeOf(scene.value)), Send(FrameOf(scene.text))};
}

Script Jitter(const Scene& scene) {
    std::uniform_int_distribution<std::chrono::milliseconds::rep> time(0, TimeOf(scene.value).count());
    return {Wait(Milliseconds(time(scene.random))), Send(FrameOf(scene.text))};
}

Script Bandwidth(const Scene& scene) {
    const auto rate = static_cast<std::size_t>(TimeOf(scene.value).count());
    const std::size_t piece = std::max<std::size_t>(1, rate / kTenthsOfASecond);
    const std::string frame = FrameOf(scene.text);
    Script script;
    for (std::size_t at = 0; at < frame.size(); at += piece) {
        script.push_back(Send(frame.substr(at, piece)));
        script.push_back(Wait(kTenth));
    }
    return script;
}

/// A stall that ends.
Script StallAfter(std::size_t bytes, const std::string& frame, const std::string& time) {
    if (bytes == 0) {
        return {Wait(TimeOf(time)), Send(frame)};
    }
    return {Send(frame.substr(0, bytes)), Wait(TimeOf(time)), Send(frame.substr(bytes))};
}

/// Sends what comes before the place, and then this.
Script EndAt(const Scene& scene, const Script& end) {
    const std::string frame = FrameOf(Padded(scene.text));
    const std::size_t bytes = PlaceIn(frame, scene.value);
    Script script;
    if (bytes > 0) {
        script.push_back(Send(frame.substr(0, bytes)));
    }
    script.insert(script.end(), end.begin(), end.end());
    return script;
}

Script StallBefore(const Scene& scene) {
    return StallAfter(0, FrameOf(scene.text), scene.value);
}

Script StallInPrefix(const Scene& scene) {
    return StallAfter(1, FrameOf(Padded(scene.text)), scene.value);
}

Script StallInText(const Scene& scene) {
    const std::string frame = FrameOf(scene.text);
    return StallAfter(frame.size() / 2, frame, scene.value);
}

Script Hang(const Scene& scene) {
    constexpr Milliseconds kLongestPatience{90'000};
    return EndAt(scene, {Just(Kind::AwaitHangUp, kLongestPatience), Just(Kind::Close)});
}

Script CloseAt(const Scene& scene) {
    return EndAt(scene, {Just(Kind::Close)});
}

Script ResetAt(const Scene& scene) {
    return EndAt(scene, {Just(Kind::Reset)});
}

Script HalfCloseAt(const Scene& scene) {
    return EndAt(scene, {Just(Kind::HalfClose), Take(kSilenceTime), Just(Kind::Close)});
}

Script Gone(const Scene& scene) {
    return {Just(Kind::Reset), Just(Kind::Refuse, TimeOf(scene.value))};
}

Script RefuseCalls(const Scene& scene) {
    return {Just(Kind::Reset), Just(Kind::Refuse, TimeOf(scene.value))};
}

Script CloseCall(const Scene&) {
    return {Just(Kind::Close)};
}

Script ResetCall(const Scene&) {
    return {Just(Kind::Reset)};
}

Script IgnoreCall(const Scene& scene) {
    return {Wait(TimeOf(scene.value)), Just(Kind::Close)};
}

}  // namespace

// clang-format off
const std::vector<Fault>& NetworkFaults() {
    static const char* const kGroup = "network";
    static const std::vector<std::string> kPlaces = {"in-text", "before", "in-prefix", "after"};
    static const std::vector<Fault> faults = {
        {"latency", kGroup, Duty::GoesOn, "12", {}, {"300", "1000"}, true,
         "sends so many milliseconds late", Latency},
        {"jitter", kGroup, Duty::GoesOn, "12", {}, {"500"}, true,
         "sends up to so many milliseconds late", Jitter},
        {"bandwidth", kGroup, Duty::GoesOn, "12", {}, {"200"}, true,
         "sends so many bytes a second", Bandwidth},
        {"stall-before", kGroup, Duty::GoesOn, "12", {}, {"2000"}, false,
         "stalls before the message, for so many milliseconds", StallBefore},
        {"stall-in-prefix", kGroup, Duty::GoesOn, "12", {}, {"2000"}, false,
         "stalls after the first of two bytes of prefix, for so many milliseconds", StallInPrefix},
        {"stall-in-text", kGroup, Duty::GoesOn, "12", {}, {"2000"}, false,
         "stalls in the middle of the text, for so many milliseconds", StallInText},
        {"hang", kGroup, Duty::Survives, "12", {}, {"in-text", "in-prefix"}, false,
         "never sends the rest of the message; the DVR has to hang up by itself, within 90 s", Hang},
        {"close", kGroup, Duty::Survives, "12", {}, kPlaces, false,
         "closes the connection at that place of the message", CloseAt},
        {"reset", kGroup, Duty::Survives, "12", {}, kPlaces, false,
         "resets the connection at that place of the message", ResetAt},
        {"half-close", kGroup, Duty::Survives, "12", {}, kPlaces, false,
         "sends no more from that place of the message on, and closes after 1.5 s", HalfCloseAt},
        {"gone", kGroup, Duty::Survives, "12", {}, {"3000"}, false,
         "resets the connection, and is back after so many milliseconds", Gone},
        {"refuse-calls", kGroup, Duty::GoesOn, "12", {kCall}, {"3000"}, false,
         "resets the DVR's connection, and refuses others for so many milliseconds", RefuseCalls},
        {"close-call", kGroup, Duty::GoesOn, "12", {kCall}, {}, false,
         "closes the DVR's connection at once", CloseCall},
        {"reset-call", kGroup, Duty::GoesOn, "12", {kCall}, {}, false,
         "resets the DVR's connection at once", ResetCall},
        {"ignore-call", kGroup, Duty::GoesOn, "12", {kCall}, {"2000"}, false,
         "takes the DVR's connection, and closes it silently after so many milliseconds", IgnoreCall},
    };
    return faults;
}
// clang-format on

}  // namespace rig::fault
