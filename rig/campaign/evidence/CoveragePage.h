#pragma once

#include <pugixml.hpp>

#include "rig/campaign/evidence/Coverage.h"

namespace rig::campaign {

/// Adds the section "Coverage": what was not reached, which faults acted where, how often each message came.
void AddCoverage(pugi::xml_node main, const Coverage& coverage);

}  // namespace rig::campaign
