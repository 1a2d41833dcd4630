#pragma once

#include <pugixml.hpp>

#include "rig/campaign/evidence/Records.h"

namespace rig::campaign {

/// Adds what the parts do not have in common, and what they lack: nobody should read on without it.
void AddDifferences(pugi::xml_node main, const MergeRecord& merged);

/// Adds the section "Parts": the campaigns that were merged, and the cases that more than one of them ran.
void AddParts(pugi::xml_node main, const MergeRecord& merged);

}  // namespace rig::campaign
