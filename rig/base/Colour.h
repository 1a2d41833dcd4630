#pragma once

#include <string>

namespace rig {

enum class Colour { Plain, Red, Green, Yellow, Cyan, Bold };

/// @return whether standard output is a terminal that shows colours, and NO_COLOR does not forbid them
bool WantsColour();

/// @return the text with codes that make a terminal show it in that colour and then switch back; unchanged
/// for Plain
std::string Coloured(const std::string& text, Colour colour);

}  // namespace rig
