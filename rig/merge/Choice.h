#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rig/merge/Part.h"

namespace rig::merge {

/// Throws log::Unreadable if two folders have the same campaign, perhaps as it was at different times.
void RefuseTwice(const std::vector<Part>& parts);

/// @return all that the lists have, each once and in their order: what one list lacks comes before the next
/// that both have
std::vector<std::string> Interleaved(const std::vector<std::vector<std::string>>& lists);

/// @return the part, from 0, as which the case stands: of the runs that came to their end, the worst; where
/// none did, the one that got furthest; nothing if no part has the case
std::optional<std::size_t> ChosenOf(const std::vector<Part>& parts, const std::string& id);

}  // namespace rig::merge
