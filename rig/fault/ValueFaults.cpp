#include <algorithm>
#include <functional>

#include "rig/fault/FaultTables.h"

namespace rig::fault {
namespace {

struct Name {
    const char* name;
    std::string value;
};

/// Names that no recording has.
const std::vector<Name>& HostileNames() {
    static const std::vector<Name> names = {
        {"dot-dot", "../../../../etc/passwd"},
        {"absolute", "/etc/passwd"},
        {"empty", ""},
        {"long", std::string(4096, 'n')},
        {"utf-8", "\xe6\x97\xa5\xe6\x9c\xac\xf0\x9f\x93\xb9"},
        {"blanks", "  a  b  "},
        {"quotes", "a'b\"c`d"},
        {"percent-n", "%n%n%s%s%x"},
        {"semicolon", "a;reboot;$(reboot)|reboot"},
    };
    return names;
}

std::vector<std::string> KindsOfNames() {
    std::vector<std::string> kinds;
    for (const Name& one : HostileNames()) {
        kinds.emplace_back(one.name);
    }
    return kinds;
}

std::string HostileName(const std::string& kind) {
    const auto found = std::find_if(HostileNames().begin(), HostileNames().end(),
                                    [&kind](const Name& one) { return one.name == kind; });
    return found->value;
}

/// Names the event; GET_FILE names it twice in 2.0, and as its path in 1.0.
Script OtherEvent(const Scene& scene) {
    const std::string name = HostileName(scene.value);
    std::string text = scene.text;
    for (const char* const attribute : {"reid", "path"}) {
        text = Has(text, attribute) ? With(text, attribute, name) : text;
    }
    return Ask(scene, text);
}

Script OtherFile(const Scene& scene) {
    return Ask(scene, With(scene.text, "file", HostileName(scene.value)));
}

Script OtherPath(const Scene& scene) {
    return Ask(scene, With(scene.text, "path", HostileName(scene.value)), kAnswerTime);
}

Script Duration(const Scene& scene) {
    return {Send(FrameOf(With(scene.text, "duration", scene.value == "empty" ? "" : scene.value)))};
}

Script Rehash(const Scene& scene) {
    return Ask(scene, With(scene.text, "rehash", scene.value == "empty" ? "" : scene.value), kAnswerTime);
}

Script Version(const Scene& scene) {
    return Ask(scene, scene.value == "missing"
                          ? Without(scene.text, "protocolVersion")
                          : With(scene.text, "protocolVersion", scene.value == "empty" ? "" : scene.value));
}

Script UnknownAttribute(const Scene& scene) {
    return Ask(scene, With(scene.text, "vendor", "none"), kAnswerTime);
}

std::function<Script(const Scene&)> WithoutIts(const char* attribute) {
    return [attribute](const Scene& scene) { return Ask(scene, Without(scene.text, attribute)); };
}

}  // namespace

// clang-format off
const std::vector<Fault>& ValueFaults() {
    static const char* const kGroup = "value";
    static const std::vector<Fault> faults = {
        {"event-name", kGroup, Duty::Refuses, "12", {"NEXT_EVENT", "GET_FILE"}, KindsOfNames(), false,
         "first asks for an event with such a name", OtherEvent},
        {"complete-name", kGroup, Duty::Refuses, "2", {"EVENT_XFER_COMPLETE"}, KindsOfNames(), false,
         "first says that an event with such a name is complete", OtherEvent},
        {"file-name", kGroup, Duty::Refuses, "12", {"GET_FILE"}, KindsOfNames(), false,
         "first asks for a file with such a name", OtherFile},
        {"path-name", kGroup, Duty::Survives, "2", {"GET_FILE"}, KindsOfNames(), false,
         "first asks for the file with such a path", OtherPath},
        {"duration", kGroup, Duty::Survives, "12", {"DONE"},
         {"0", "-1", "2147483648", "99999999999999999999", "soon", "empty"}, false,
         "gives this duration in DONE", Duration},
        {"rehash", kGroup, Duty::Survives, "2", {"GET_FILE"}, {"maybe", "false", "empty"}, false,
         "first gives this for rehash", Rehash},
        {"version", kGroup, Duty::Survives, "2", {}, {"3.0", "1.0", "missing", "empty"}, false,
         "first sends the message with this protocolVersion", Version},
        {"unknown-attribute", kGroup, Duty::Survives, "12", {}, {}, false,
         "first sends the message with an attribute that the protocol does not know", UnknownAttribute},
        {"no-reid", kGroup, Duty::Survives, "2", {"NEXT_EVENT", "GET_FILE", "EVENT_XFER_COMPLETE"}, {}, false,
         "first sends the message without reid", WithoutIts("reid")},
        {"no-path", kGroup, Duty::Survives, "12", {"GET_FILE"}, {}, false,
         "first sends the message without path", WithoutIts("path")},
        {"no-file", kGroup, Duty::Survives, "12", {"GET_FILE"}, {}, false,
         "first sends the message without file", WithoutIts("file")},
    };
    return faults;
}
// clang-format on

}  // namespace rig::fault
