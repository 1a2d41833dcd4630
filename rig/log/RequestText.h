#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "rig/log/NextRequest.h"

namespace rig::log {

/// @return the text of a request as the harness prints it
std::string TextOf(const Request& request, const Switches& switches);

/// @return its length. The log holds nothing else of it, which tells whether what was deduced of the request
/// is right
std::size_t SizeOf(const Request& request, const Switches& switches);

/// @return the length that the request's prefix announces if its text has this size
std::uint32_t AnnouncedFor(std::size_t size, bool isSizeWrong);

}  // namespace rig::log
