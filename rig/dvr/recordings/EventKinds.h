#pragma once

#include <string>
#include <vector>

#include "rig/base/Listing.h"
#include "rig/dvr/recordings/Recordings.h"

namespace rig::dvr {

/// Makes up events whose names, number or files are unusual: those of each kind, or of "all" that go together
/// with an export to its end in the dialect. Throws Failure (Unusable) if there is no such kind.
/// @param kinds  in any order; the events come in that of ListEvents
std::vector<Event> MakeUpEvents(const std::vector<std::string>& kinds, int dialect);

/// @return all kinds, for --list-events and the documentation
Listing ListEvents();

}  // namespace rig::dvr
