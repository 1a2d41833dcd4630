#pragma once

#include <string>

#include "rig/dvr/recordings/Delivery.h"

namespace rig::dvr {

/// What a defect makes of a delivered copy.
enum class Copy {
    Good,
    Missing,
    Empty,
    Cut,      // to its first half
    Wrong,    // in its first byte
    Foreign,  // another event's file
    Late,     // comes after its FILE_COMPLETE
    Half,     // a first half next to it, under a name of its own
    Extra     // a file that no event has next to it
};

/// Makes of the good copy of a file what is asked for; a late one is missing until CopyWhole. All throw
/// Failure (Unusable) when something cannot be read or written.
void SpoilCopy(const DeliveryFolder& folder, const std::string& event, const std::string& file, Copy copy);

/// Copies a whole file at once.
void CopyWhole(const DeliveryFolder& folder, const std::string& event, const std::string& file);

}  // namespace rig::dvr
