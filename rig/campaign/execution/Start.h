#pragma once

#include "rig/campaign/Outcome.h"
#include "rig/campaign/RunCommand.h"

namespace rig::campaign {

/// Plans the campaign that the options describe, makes its folder and runs it. Throws std::runtime_error when
/// the options cannot be followed or evidence cannot be written.
Outcome Start(const RunOptions& options);

}  // namespace rig::campaign
