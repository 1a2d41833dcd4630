#include "rig/dvr/weaknesses/Weakness.h"

namespace rig::dvr {
namespace {

constexpr Milliseconds kAtOnce(500);

WeaknessKind InCalls(const char* name, const char* does, const char* shownBy,
                     bool (*atEnd)(const CallEnd& end)) {
    WeaknessKind kind{name, "12", Reaction::GiveUp, does, shownBy};
    kind.atEnd = atEnd;
    return kind;
}

WeaknessKind Counting(WeaknessKind kind, const char* value, std::size_t usual) {
    kind.value = value;
    kind.limit = usual;
    return kind;
}

bool IsResetInExport(const CallEnd& end) {
    return !end.thenRefused && end.byReset && end.inExport;
}

bool IsClosedInExport(const CallEnd& end) {
    return !end.thenRefused && end.byBackend && !end.byReset && end.inExport && !end.insideFrame;
}

bool IsEndedInMessage(const CallEnd& end) {
    return !end.thenRefused && end.byBackend && end.insideFrame;
}

bool IsEndedAtOnce(const CallEnd& end) {
    return !end.thenRefused && end.byBackend && end.unheard && !end.insideFrame && end.lasted < kAtOnce;
}

bool IsRefusedInExport(const CallEnd& end) {
    return end.thenRefused && end.byBackend && end.inExport;
}

}  // namespace

const std::vector<WeaknessKind>& CallWeaknesses() {
    static const std::vector<WeaknessKind> kinds = {
        InCalls("dies-of-reset", "never calls again after a reset in mid-export", "resets the connection",
                IsResetInExport),
        InCalls("dies-of-close", "never calls again after the end of a connection in mid-export",
                "closes the connection between two messages", IsClosedInExport),
        Counting(InCalls("loses-slot",
                         "has one slot, or SLOTS, and loses it with a connection that ends inside a message",
                         "ends the connection inside a message", IsEndedInMessage),
                 "SLOTS", 1),
        InCalls("dies-of-brief-call", "never calls again after a connection of less than half a second",
                "ends the connection at once", IsEndedAtOnce),
        InCalls("dies-of-refusal",
                "never calls again when nobody takes the call after an export that broke off",
                "resets the connection, and refuses others for a while", IsRefusedInExport),
    };
    return kinds;
}

}  // namespace rig::dvr
