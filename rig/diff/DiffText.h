#pragma once

#include <string>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// @return the comparison in words for a terminal
/// @param all whether to name the unchanged cases too
std::string DiffText(const Comparison& comparison, bool all, bool colour);

/// @return a campaign in one line: its folder, note and start, and its state if it was not finished
std::string Words(const Campaign& campaign);

}  // namespace rig::diff
