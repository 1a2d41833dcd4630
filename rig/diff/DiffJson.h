#pragma once

#include <string>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// @return the comparison as JSON: `before` and `now` (`folder`, `state`, `note`, `begin`), `surroundings`,
/// `counts`, and all `cases` with `name`, `switches`, `change` and `differences`. A difference has `change`,
/// `subject`, `before` and `now`.
std::string DiffJson(const Comparison& comparison);

}  // namespace rig::diff
