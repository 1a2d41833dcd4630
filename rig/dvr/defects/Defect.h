#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "rig/base/Listing.h"
#include "rig/dvr/recordings/BadCopy.h"
#include "rig/dvr/recordings/Recordings.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// One message of the DVR on its way to the wire, with all that a defect can do to it.
struct Outgoing {
    enum class End { Keep, Close, Reset };

    explicit Outgoing(Message honest) : message(std::move(honest)) {}

    Message message;
    std::vector<Message> before;        // sent before it
    std::vector<Message> after;         // sent after it
    bool dropped = false;               // it is not sent at all, nor is `before` or `after`
    std::optional<std::string> text;    // sent in place of the printed message
    std::optional<std::string> prefix;  // sent in place of the right one, byte by byte
    std::int64_t announcedTooMuch = 0;  // bytes; negative: too few
    std::optional<std::size_t> cut;     // only so many bytes of the frame are sent; more than it has: all
    bool cutAtRandom = false;           // the same, at a random byte
    End end = End::Keep;                // what becomes of the connection after it
    bool silent = false;                // nothing more is sent after it
    bool knocks = false;                // a second connection is opened after it
    bool reconnects = false;            // the dialogue is held once more on a connection of its own
    Copy copy = Copy::Good;             // of the file that it is about
    std::vector<std::string> defects;   // names of those that acted, for people
};

/// What may follow "NAME=".
enum class DefectValue {
    None,
    Text,   // any
    Count,  // a number of bytes above 0
    Place   // after which byte: a number, `all`, or `random`
};

/// What a defect works with.
struct DefectContext {
    const std::string& value;  // checked; the kind's standard value if none was given
    const Recordings& recordings;
    std::mt19937& random;
};

/// One way in which a DVR can be wrong.
struct DefectKind {
    const char* name;
    DefectValue value;
    const char* standard;               // the value when none is given
    const char* dialects;               // "1", "2" or "12"
    std::vector<const char*> messages;  // that it can act on; empty: all
    bool always;                        // without --on it acts on every message, not only the first
    const char* does;
    const char* logs;  // what the harness then logs, or how it ends

    /// Changes the message. @return whether there was something to change
    bool (*change)(Outgoing& outgoing, const DefectContext& context);

    bool spoilsCopies = false;  // and shows only where there are any
};

/// All kinds, in the order in which they are listed.
const std::vector<DefectKind>& DefectKinds();

/// @return the kind of that name. Throws Failure (Unusable), listing the valid names, when there is none.
const DefectKind& FindDefectKind(std::string_view name);

/// Throws Failure (Unusable) unless the value is one that the kind takes.
void CheckDefectValue(const DefectKind& kind, const std::string& value);

/// @return all kinds, for --list-defects and the documentation
Listing ListDefects();

}  // namespace rig::dvr
