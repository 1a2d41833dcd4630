#pragma once

#include <cstddef>

namespace rig {

/// @return how wide the terminal at standard output is, in columns; 80 if it does not say
std::size_t TerminalColumns();

}  // namespace rig
