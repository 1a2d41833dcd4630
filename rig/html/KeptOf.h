#pragma once

#include <cstddef>
#include <vector>

namespace rig::html {

/// @return which of `count` things a page with room for `limit` holds, ascending: all, or half of `limit`
///         from the start and half from the end, and up to `limit` of those in between for which
///         `matters(index)` is true
template <typename Predicate>
std::vector<std::size_t> KeptOf(std::size_t count, std::size_t limit, const Predicate& matters) {
    std::vector<std::size_t> kept;
    for (std::size_t index = 0; index < count; ++index) {
        const bool isAtEnds = count <= limit || index < limit / 2 || index + limit / 2 >= count;
        if (isAtEnds || (kept.size() < limit / 2 + limit && matters(index))) {
            kept.push_back(index);
        }
    }
    return kept;
}

}  // namespace rig::html
