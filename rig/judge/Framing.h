#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What a length prefix and the text after it tell of how a DVR frames its messages. The log does not hold the
// bytes of a prefix, only the number that the harness read out of it; that number has one shortest prefix.

namespace rig::judge {

/// @return the prefix for a text of this size, as it must be: "80 01" for 128
std::string PrefixFor(std::uint32_t size);

/// What is wrong with the prefix of a message.
struct FramingFault {
    std::string words;      // the prefix as received, what is wrong with it, and how it would be right
    bool isProved = false;  // otherwise the DVR may have stopped in the middle of a good message
};

/// Explains a prefix after which the connection ended, or nothing more came.
/// @param announced  bytes
/// @param came  bytes of text until the connection ended; nothing if it stayed open
FramingFault ExplainMissing(std::int64_t announced, std::optional<std::int64_t> came);

/// Explains a prefix after which a whole text came that is not XML.
/// @param text  as long as its prefix announces
FramingFault ExplainText(std::string_view text);

/// @return why a text is not XML, and where
std::string Where(std::string_view text);

}  // namespace rig::judge
