#pragma once

#include <chrono>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "rig/base/Listing.h"

namespace rig::fault {

using Milliseconds = std::chrono::milliseconds;

/// What a good DVR does when the backend has this fault.
enum class Duty {
    GoesOn,    // the fault is legal: this export ends well
    Refuses,   // it reports what the dialect has a report for, else stays silent or hangs up; it does not act
    Survives,  // it may hang up, but calls again and passes a clean export
};

/// One thing that a faulty backend does to the DVR.
struct Act {
    enum class Kind {
        Send,          // the bytes, in one piece
        Wait,          // for the time
        TakeAnswers,   // keeps what the DVR sends from the harness until `answers` have come, at most for the
                       // time; if `only` is not empty, only messages of these names
        AwaitHangUp,   // the DVR is to end the connection within the time
        LeaveOutNext,  // the harness's next message does not go out
        HalfClose,     // no more comes from the backend
        Close,
        Reset,
        Refuse,  // connections, for the time
    };

    Kind kind;
    std::string bytes = {};
    Milliseconds time{0};
    std::size_t answers = 1;
    std::vector<std::string> only = {};
};

/// What the backend does in place of sending a message, in this order.
using Script = std::vector<Act>;

/// What a fault works with.
struct Scene {
    const std::string& text;   // the harness's message, without prefix; empty: the DVR has connected
    int dialect;               // 1 or 2
    const std::string& value;  // checked; the fault's first value if none was given
    const std::string& event;  // the identifier of another event that the DVR has; empty if none is known
    std::mt19937& random;
};

/// One way in which a backend can be wrong, or unusual.
struct Fault {
    std::string name;
    const char* group;
    Duty duty;
    const char* dialects;               // "1", "2" or "12"
    std::vector<std::string> messages;  // of the harness, that it acts on; empty: all of an export
    std::vector<std::string> values;    // each worth a case, the usual one first; empty: it takes none
    bool always;                        // it acts on every such message, not only on the first
    std::string does;                   // what the backend does, as a phrase: "closes the connection"

    /// @return what is played in place of the message; nothing where there is nothing to change
    std::function<Script(const Scene& scene)> play;

    std::size_t actsDue = 0;  // answers to what the backend made up, with which a good DVR acts on it
};

/// In place of a message: the DVR's call, before the harness knows of it.
inline const char* const kCall = "CALL";

/// @return all faults, in the order in which they are listed
const std::vector<Fault>& Faults();

/// @return the fault of that name; null if there is none
const Fault* Find(std::string_view name);

/// @return whether the fault takes the value: any number below 10^9 where its own are numbers, else one of
/// its own
bool Takes(const Fault& fault, const std::string& value);

/// @return the messages that the fault acts on in the dialect, in the order of an export
std::vector<std::string> MessagesOf(const Fault& fault, int dialect);

/// @return whether the fault acts in the dialect
bool IsOf(const Fault& fault, int dialect);

/// @return "goes on", "refuses", "survives"
const char* NameOf(Duty duty);

/// @return all faults, for --list-faults and the documentation
Listing ListFaults();

}  // namespace rig::fault
