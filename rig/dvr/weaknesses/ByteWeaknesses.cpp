#include "rig/dvr/weaknesses/Weakness.h"

namespace rig::dvr {
namespace {

WeaknessKind InBytes(const char* name, Reaction reaction, Flaw flaw, const char* does, const char* shownBy) {
    WeaknessKind kind{name, "12", reaction, does, shownBy};
    kind.flaw = flaw;
    return kind;
}

WeaknessKind Limited(WeaknessKind kind, const char* value, std::size_t usual) {
    kind.value = value;
    kind.limit = usual;
    return kind;
}

}  // namespace

const std::vector<WeaknessKind>& ByteWeaknesses() {
    static const std::vector<WeaknessKind> kinds = {
        InBytes("two-byte-prefix", Reaction::Flaw, Flaw::TwoBytePrefix,
                "reads at most two bytes of a prefix, and takes the third for text",
                "writes a prefix of three bytes or more"),
        InBytes("endless-prefix", Reaction::Abort, Flaw::EndlessPrefix,
                "shifts the bytes of a prefix beyond its integer, and aborts",
                "sends a prefix of more than five bytes"),
        InBytes("signed-length", Reaction::Abort, Flaw::SignedLength,
                "takes the length for a signed number, and aborts below 0", "announces 2^31 bytes or more"),
        InBytes("trusts-length", Reaction::Abort, Flaw::TrustsLength,
                "allocates what a prefix announces, and aborts when it gets none",
                "announces from 2^30 to 2^31-1 bytes"),
        InBytes("takes-piece", Reaction::Flaw, Flaw::TakesPiece,
                "takes the first piece of a text for all of it, unless a document ends there",
                "sends a text in pieces"),
        Limited(InBytes("short-queue", Reaction::Abort, Flaw::ShortQueue,
                        "has room for 8 messages, or MESSAGES, of one piece, and aborts when there are more",
                        "sends many messages at once"),
                "MESSAGES", 8),
        InBytes("impatient", Reaction::HangUp, Flaw::Impatient,
                "hangs up when nothing more of a message has come for a second",
                "stalls for longer inside a message"),
        InBytes("no-frame-timeout", Reaction::Flaw, Flaw::NoFrameTimeout,
                "waits for the rest of a message for ever", "never sends it, and keeps the connection"),
        InBytes("misses-end", Reaction::Hang, Flaw::MissesEnd,
                "reads on a connection that has ended, and never calls again",
                "ends the connection inside a message"),
    };
    return kinds;
}

}  // namespace rig::dvr
