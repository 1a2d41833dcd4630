#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

/// Leaves the message as it is.
template <Copy copy>
bool Spoil(Outgoing& outgoing, const DefectContext&) {
    outgoing.copy = copy;
    return true;
}

/// The same for what cannot be done to an empty file.
template <Copy copy>
bool SpoilContent(Outgoing& outgoing, const DefectContext& context) {
    return outgoing.message.Get("length") != "0" && Spoil<copy>(outgoing, context);
}

bool SpoilForeign(Outgoing& outgoing, const DefectContext& context) {
    return context.recordings.Events().size() > 1 && Spoil<Copy::Foreign>(outgoing, context);
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& CopyDefects() {
    static const char* const nothing = "nothing: the files do not travel over its connection";
    static const std::vector<DefectKind> kinds = {
        {"no-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: completes a file that it has not delivered", nothing, Spoil<Copy::Missing>, true},
        {"empty-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: delivers an empty file", nothing, SpoilContent<Copy::Empty>, true},
        {"cut-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: delivers the first half of a file", nothing, SpoilContent<Copy::Cut>, true},
        {"wrong-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: delivers a file with a wrong first byte", nothing, SpoilContent<Copy::Wrong>, true},
        {"foreign-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: delivers another event's file instead, the one of the same name or else its first", nothing,
         SpoilForeign, true},
        {"late-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: delivers a file when the dialogue is over, 3 s after its FILE_COMPLETE or later", nothing,
         Spoil<Copy::Late>, true},
        {"half-copy", None, "", "2", {"TRANSPORT_EXCEPTION"}, false,
         "with --deliver: leaves half of a file whose transfer failed, as FILE.part", nothing, Spoil<Copy::Half>, true},
        {"extra-copy", None, "", "12", {"FILE_COMPLETE"}, false,
         "with --deliver: delivers a file that nobody asked for, too", nothing, Spoil<Copy::Extra>, true},
    };
    return kinds;
}
// clang-format on

}  // namespace rig::dvr
