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

/// What stood around a text that was received.
struct ReceivedFrame {
    std::string prefix;         // as it came
    std::size_t announced = 0;  // bytes of text, by the prefix
};

/// Puts frames together from bytes that arrive in pieces of any size.
class FrameDecoder {
 public:
    /// From now on a wrong announced length is lived with: a text ends where its document does, and what
    /// stands behind that is the next frame.
    void AcceptSizeErrors() { acceptsSizeErrors_ = true; }

    /// The next frame, if it announces `announced` bytes, is handed out when `size` bytes of its text are
    /// there.
    void ExpectSizeError(std::size_t announced, std::size_t size) { expected_ = {announced, size}; }

    /// Takes in `count` bytes as they arrived.
    void Append(const char* bytes, std::size_t count);

    /// @return the text of the next whole frame; nothing while more bytes are needed
    /// Throws Breach for a prefix of more than five bytes or of more than kMaxTextBytes.
    std::optional<std::string> Next();

    /// To be called when no more bytes of the frame that has begun will come.
    /// @return what has come of its text, up to the document's end; nothing where size errors are not
    /// accepted, or where not even its prefix is whole
    std::optional<std::string> GiveUp();

    /// @return what stood around the text that was handed out last
    const ReceivedFrame& LastFrame() const { return last_; }

    /// @return whether a frame has begun and is not yet whole. Asked after Next has returned nothing.
    bool InsideFrame() const;

    /// @return how far the frame that has begun got, for people: "announced 450, got 300"
    std::string Progress() const;

 private:
    struct SizeError {
        std::size_t announced;
        std::size_t size;
    };

    bool ReadPrefix();
    std::string Take(std::size_t size);

    std::string bytes_;  // received and not yet handed out, the prefix excluded once it is read
    std::optional<std::size_t> announced_;  // length of the text that bytes_ starts with
    std::string prefix_;                    // that announced it
    ReceivedFrame last_;
    bool acceptsSizeErrors_ = false;
    std::optional<SizeError> expected_;
};

}  // namespace rig
