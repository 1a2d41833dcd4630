#pragma once

#include <string_view>

namespace rig::history {

/// @return whether a text comes before another where numbers in them count as numbers: "1.9" before "1.10".
/// Of texts whose numbers differ only in leading zeros, the plain order of their characters decides.
bool IsNaturallyBefore(std::string_view one, std::string_view other);

}  // namespace rig::history
