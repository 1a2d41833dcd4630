#pragma once

#include <string>

#include "rig/result/Result.h"

// What verdicts.txt has of a log, where the layout is explained.

std::string Verdicts(const rig::result::Result& result, bool wantsPasses);

std::string Dialogue(const rig::result::Result& result);

/// @return how long the runs took, and the reactions
std::string Times(const rig::result::Result& result);

/// @return what `judge --messages` prints, with the sizes of the texts in their place
std::string Messages(const std::string& log);
