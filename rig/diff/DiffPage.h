#pragma once

#include <string>

#include "rig/diff/Compare.h"

namespace rig::diff {

/// @return the comparison as one self-contained HTML page
/// @param place the folder where the page will be: its links to the evidence are relative to it
std::string DiffPage(const Comparison& comparison, const std::string& place);

}  // namespace rig::diff
