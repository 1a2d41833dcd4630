#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace rig {

/// @return a bar for people, on one line and not wider than `columns`:
///
///     front-1.ts [=========>          ]  48 %  1.2 of 2.5 MB
///
/// @param name        shortened if there is no room for it
/// @param done,total  bytes; more than `total` counts as `total`
std::string ProgressBar(const std::string& name, std::uint64_t done, std::uint64_t total,
                        std::size_t columns);

}  // namespace rig
