#pragma once

namespace rig {

/// @return whether std::cout, flushed, could not take all that was printed. A reader that left early
/// (`| head`) has what it wanted: that is not a loss.
bool IsOutputLost();

}  // namespace rig
