#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "rig/base/Listing.h"

namespace rig::dvr {

/// Finds the row that the value of an option names, without what may follow its name ("[=MS]").
/// @return its number; nothing for "all"
/// Throws Failure (Unusable), with all names, if there is no such row.
std::optional<std::size_t> Choose(const char* option, const Listing& listing, const std::string& name);

}  // namespace rig::dvr
