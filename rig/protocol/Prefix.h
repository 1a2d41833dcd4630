#pragma once

#include <cstddef>

namespace rig::protocol {

/// The wire format. A frame is a prefix of 1 to 5 bytes, which gives the length of the text, and then the
/// text, with nothing before, between or after:
///
///     prefix   7 bits of the length per byte, least significant first; bit 7 set on every byte but the last
///     text     one XML document, as many bytes as announced, no terminating NUL
constexpr std::size_t kMaxPrefixBytes = 5;

}  // namespace rig::protocol
