#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace rig {

/// The wire format. A frame is the length of its text as a prefix of 1 to 5 bytes and then the text, with
/// nothing before, between or after:
///
///     prefix   7 bits of the length a byte, least significant first; bit 7 set on every byte but the last
///     text     one XML document, as many bytes as announced, no terminating NUL
constexpr std::size_t kMaxPrefixBytes = 5;

/// The longest text that is taken in, in bytes. Far above any message of a real export; a prefix that
/// announces more was garbled.
constexpr std::size_t kMaxTextBytes = std::size_t{64} * 1024 * 1024;

/// @return the prefix that announces `length` bytes
std::string EncodePrefix(std::uint32_t length);

/// @return the whole frame of a text of less than 4 GiB
std::string EncodeFrame(const std::string& text);

/// Puts frames together from bytes that arrive in pieces of any size.
class FrameDecoder {
 public:
    /// Takes in `count` bytes as they arrived.
    void Append(const char* bytes, std::size_t count);

    /// @return the text of the next whole frame; nothing while more bytes are needed
    /// Throws Breach for a prefix of more than five bytes or of more than kMaxTextBytes.
    std::optional<std::string> Next();

    /// @return whether a frame has begun and is not yet whole. Asked after Next has returned nothing.
    bool InsideFrame() const;

    /// @return how far the frame that has begun got, for people: "announced 450, got 300"
    std::string Progress() const;

 private:
    bool ReadPrefix();

    std::string bytes_;  // received and not yet handed out, the prefix excluded once it is read
    std::optional<std::size_t> announced_;  // length of the text that bytes_ starts with
};

}  // namespace rig
