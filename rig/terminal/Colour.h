#pragma once

#include <string>

namespace rig {

enum class Colour { Plain, Red, Green, Yellow, Cyan, Bold };

/// @return whether standard output is a terminal that shows colours, and the user has not asked for none by
/// NO_COLOR
bool WantsColour();

/// @return the text with what makes a terminal show it in that colour, and then go back to its own; as it is
/// for Plain
std::string Coloured(const std::string& text, Colour colour);

}  // namespace rig
