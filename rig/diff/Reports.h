#pragma once

#include <string>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// @return the comparison in words for a terminal
/// @param all whether to name the unchanged cases too
std::string DiffText(const Comparison& comparison, bool all, bool colour);

/// @return a campaign in one line: its folder, note and start, and its state if it was not finished
std::string Words(const Campaign& campaign);

/// @return the comparison as JSON: `before` and `now` (`folder`, `state`, `note`, `begin`), `surroundings`,
/// `counts`, and all `cases` with `name`, `switches`, `change` and `differences`. A difference has `change`,
/// `subject`, `before` and `now`.
std::string DiffJson(const Comparison& comparison);

/// @return the comparison as one self-contained HTML page
/// @param place the folder where the page will be: its links to the evidence are relative to it
std::string DiffPage(const Comparison& comparison, const std::string& place);

}  // namespace rig::diff
