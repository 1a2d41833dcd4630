#pragma once

#include <cstddef>
#include <string>

namespace rig {

enum class Colour { Plain, Red, Green, Yellow, Cyan, Bold };

/// @return whether standard output is a terminal that shows colours, and NO_COLOR does not forbid them
bool WantsColour();

/// @return the text with the codes that make a terminal show it in that colour; unchanged for Plain
std::string Coloured(const std::string& text, Colour colour);

/// @return the width of the terminal at standard output, in columns; 80 if it is unknown
std::size_t TerminalColumns();

}  // namespace rig
