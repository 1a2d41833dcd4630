#include "rig/terminal/Colour.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

namespace rig {

bool WantsColour() {
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) == 1 && std::getenv("NO_COLOR") == nullptr && terminal != nullptr &&
           std::string(terminal) != "dumb";
}

}  // namespace rig
