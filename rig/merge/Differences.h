#pragma once

#include <string>
#include <vector>

#include "rig/merge/Part.h"

namespace rig::merge {

/// @return what the parts do not have in common, each in a sentence, what matters most first: the harness,
/// what was tested (the note), the program, options and commands, the seed, where it was; a case whose
/// switches differ
std::vector<std::string> DifferencesOf(const std::vector<Part>& parts);

}  // namespace rig::merge
