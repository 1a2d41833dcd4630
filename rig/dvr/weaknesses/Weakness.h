#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "rig/base/Listing.h"
#include "rig/dvr/recordings/Recordings.h"
#include "rig/dvr/wire/Connection.h"
#include "rig/dvr/wire/Flaws.h"
#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// What a weak recorder does where a good one does what is right.
enum class Reaction {
    Abort,   // ends as by a failed assertion
    HangUp,  // and calls again
    Ignore,  // does as if nothing had come
    Hang,    // does nothing any more, and keeps the connection
    GiveUp,  // hangs up, and never calls again
    Answer,  // does what it is asked to
    Flaw,    // what the flaw says
};

/// How a call ended that did not end with DONE.
struct CallEnd {
    bool byBackend = false;    // which ended the connection
    bool byReset = false;      // at once
    bool insideFrame = false;  // while a message had come in part
    bool inExport = false;     // between the list and DONE
    bool unheard = false;      // no message had come
    Milliseconds lasted{0};
    bool thenRefused = false;  // it ended so, and the next call was not taken
};

/// One way in which a recorder is weak: what it does wrong, and where. It shows in the place whose function
/// is set.
struct WeaknessKind {
    const char* name;
    const char* dialects;  // "1", "2" or "12"
    Reaction reaction;
    const char* does;     // what the recorder does
    const char* shownBy;  // the backend with which it shows

    const char* value = "";  // what its limit counts; empty: it has none
    std::size_t limit = 0;   // usual one

    std::optional<Flaw> flaw = {};                                                 // in bytes
    bool (*inText)(const std::string& text, std::size_t limit) = nullptr;          // before it is read
    bool (*inMessage)(const Message& message) = nullptr;                           // before it is handled
    bool (*inRefused)(const Message& request, const Recordings& there) = nullptr;  // by a good recorder
    Message (*answer)(const Message& request, const Recordings& there) = nullptr;  // to that
    bool (*atEnd)(const CallEnd& end) = nullptr;                                   // of a call
};

// The tables of weaknesses, by subject. To add a weakness, add its row, with the function that says where it
// shows.
const std::vector<WeaknessKind>& ByteWeaknesses();
const std::vector<WeaknessKind>& ShapeWeaknesses();   // legal XML
const std::vector<WeaknessKind>& MarkupWeaknesses();  // illegal or hostile XML
const std::vector<WeaknessKind>& ValueWeaknesses();
const std::vector<WeaknessKind>& OrderWeaknesses();  // requests that are to be refused
const std::vector<WeaknessKind>& CallWeaknesses();

/// All kinds, in the order in which they are listed.
const std::vector<WeaknessKind>& WeaknessKinds();

/// @return all kinds, for --list-weaknesses and the documentation
Listing ListWeaknesses();

}  // namespace rig::dvr
