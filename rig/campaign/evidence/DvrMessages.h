#pragma once

#include <string>
#include <vector>

#include "rig/log/RunReader.h"

namespace rig::campaign {

/// What the coverage counts of a message of the DVR.
struct DvrMessage {
    std::string name;                 // `req`; empty if missing
    std::vector<std::string> fields;  // its attributes except `req`, and its children, "events/event"
};

/// @param message  with an element `msg`
DvrMessage DvrMessageOf(const log::Message& message);

}  // namespace rig::campaign
