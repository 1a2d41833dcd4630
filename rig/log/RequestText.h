#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "rig/log/NextRequest.h"

namespace rig::log {

/// @return the text of a request as the harness prints it: the log holds only its length, which tells whether
/// what was deduced of it is right
std::string TextOf(const Request& request, const Switches& switches);

/// @return the length that the request's prefix announces if its text has this size
std::uint32_t AnnouncedFor(std::size_t size, bool isSizeWrong);

}  // namespace rig::log
