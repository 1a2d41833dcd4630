#pragma once

namespace rig {

/// @return whether std::cout, flushed, could not take all that was printed. A reader who left early (`|
/// head`)
///         has what he wanted: nothing is lost then.
bool IsOutputLost();

}  // namespace rig
