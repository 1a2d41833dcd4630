#pragma once

#include <string>

namespace rig::html {

/// @return the way from a page in the folder `place` to a file or folder, as a link's target has it: what a
/// browser would take for something else than a name's letter ('#', '%', ':' ...) is escaped
std::string RelativeLink(const std::string& target, const std::string& place);

}  // namespace rig::html
