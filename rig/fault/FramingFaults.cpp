#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

using namespace std::string_literals;

std::size_t CountOf(const Scene& scene) {
    return static_cast<std::size_t>(TimeOf(scene.value).count());
}

Script TooShort(const Scene& scene) {
    return BreakOff(PrefixOf(scene.text.size() - std::min(CountOf(scene), scene.text.size())) + scene.text);
}

Script TooLong(const Scene& scene) {
    return BreakOff(PrefixOf(scene.text.size() + CountOf(scene)) + scene.text);
}

/// A prefix with groups that are zero: every reader of such numbers gets the same length from it.
Script Wide(const Scene& scene) {
    std::string prefix = PrefixOf(scene.text.size());
    for (std::size_t more = CountOf(scene); more > 0 && prefix.size() < 5; --more) {
        prefix.back() = static_cast<char>(prefix.back() | '\x80');
        prefix += '\0';
    }
    return {Send(prefix + scene.text)};
}

/// The right length in the low 32 bits, and bits above them.
Script Overflowing(const Scene& scene) {
    std::string prefix = PrefixOf(scene.text.size());
    while (prefix.size() < 5) {
        prefix.back() = static_cast<char>(prefix.back() | '\x80');
        prefix += '\0';
    }
    prefix.back() = '\x70';
    return BreakOff(prefix + scene.text);
}

Script Endless(const Scene& scene) {
    return BreakOff(std::string(CountOf(scene), '\xff'));
}

Script Empty(const Scene& scene) {
    return {Send("\0"s), Take(kSilenceTime), Send(FrameOf(scene.text))};
}

Script Huge(const Scene& scene) {
    return BreakOff("\xff\xff\xff\xff\x07" + scene.text);
}

Script Negative(const Scene& scene) {
    return BreakOff("\xff\xff\xff\xff\x0f" + scene.text);
}

Script Nul(const Scene& scene) {
    std::string text = scene.text;
    text.insert(scene.value == "middle" ? text.find(' ') : text.size(), 1, '\0');
    return Ask(scene, text);
}

Script Trailing(const Scene& scene) {
    return Ask(scene, scene.text + "trailing bytes");
}

Script Leading(const Scene& scene) {
    return BreakOff("HTTP/1.1 400 Bad Request\r\n\r\n" + FrameOf(scene.text));
}

}  // namespace

// clang-format off
const std::vector<Fault>& FramingFaults() {
    static const char* const kGroup = "framing";
    static const std::vector<Fault> faults = {
        {"prefix-short", kGroup, Duty::Survives, "12", {}, {"1", "16"}, false,
         "announces so many bytes too few, and closes after 1.5 s", TooShort},
        {"prefix-long", kGroup, Duty::Survives, "12", {}, {"1", "1000"}, false,
         "announces so many bytes too many, and closes after 1.5 s", TooLong},
        {"prefix-wide", kGroup, Duty::GoesOn, "12", {}, {"1", "4"}, false,
         "writes the length with so many more bytes than it needs", Wide},
        {"prefix-overflow", kGroup, Duty::Survives, "12", {}, {}, false,
         "sets bits beyond the 32nd in the length, and closes after 1.5 s", Overflowing},
        {"prefix-endless", kGroup, Duty::Survives, "12", {}, {"64", "100000"}, false,
         "sends a prefix of so many bytes that does not end, and closes after 1.5 s", Endless},
        {"length-zero", kGroup, Duty::Survives, "12", {}, {}, false,
         "sends an empty message first", Empty},
        {"length-huge", kGroup, Duty::Survives, "12", {}, {}, false,
         "announces 2^31-1 bytes, and closes after 1.5 s", Huge},
        {"length-negative", kGroup, Duty::Survives, "12", {}, {}, false,
         "announces 2^32-1 bytes, -1 to a reader of signed numbers, and closes after 1.5 s", Negative},
        {"nul-in-text", kGroup, Duty::Survives, "12", {}, {"middle", "end"}, false,
         "sends the message with a NUL first", Nul},
        {"trailing-bytes", kGroup, Duty::Survives, "12", {}, {}, false,
         "sends the message first with bytes after its document, which the length counts", Trailing},
        {"leading-bytes", kGroup, Duty::Survives, "12", {}, {}, false,
         "sends bytes that are no frame before it, and closes after 1.5 s", Leading},
    };
    return faults;
}
// clang-format on

}  // namespace rig::fault
