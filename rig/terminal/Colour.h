#pragma once

namespace rig {

/// @return whether standard output is a terminal that shows colours, and the user has not asked for none by
/// NO_COLOR
bool WantsColour();

}  // namespace rig
