#pragma once

#include <string>

#include "rig/base/Listing.h"
#include "rig/dvr/wire/Connection.h"

namespace rig::dvr {

/// What a DVR may do in the dialogue, though it need not.
struct Habits {
    Milliseconds progress{0};     // between reports of a running transfer; 0: none
    Milliseconds lateness{0};     // from the end of a transfer to its FILE_COMPLETE
    int callsAgain = 0;           // times, after DONE
    bool sharesSegments = false;  // by messages that the harness does not answer
    bool awaitsClose = false;     // after the dialogue

    /// Adds the habit of that name, with its value if there is one ("NAME=VALUE"), or each of them for "all".
    /// Throws Failure (Unusable) if there is no such habit or value.
    void Add(const std::string& option);
};

/// @return all habits, for --list-habits and the documentation
Listing ListHabits();

}  // namespace rig::dvr
