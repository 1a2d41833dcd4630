#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rig::result {

/// @return the seconds between two times in microseconds, "0.255"; nothing if one is not known
std::string SecondsSince(const std::optional<std::int64_t>& begin, const std::optional<std::int64_t>& time);

/// @param time microseconds since 1970. @return "2026-11-20T14:03:07Z"
std::string Date(std::int64_t time);

}  // namespace rig::result
