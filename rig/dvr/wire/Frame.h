#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "rig/dvr/wire/Flaws.h"
#include "rig/protocol/Prefix.h"

namespace rig::dvr {

using protocol::kMaxPrefixBytes;

/// The longest text accepted unless another limit is set, in bytes. Far more than any message of a real
/// export; a prefix that announces more is garbled.
constexpr std::size_t kMaxTextBytes = std::size_t{64} * 1024 * 1024;

/// @return the prefix that announces `length` bytes
std::string EncodePrefix(std::uint32_t length);

/// @return the whole frame of a text of less than 4 GiB
std::string EncodeFrame(const std::string& text);

/// The frame of a received text.
struct ReceivedFrame {
    std::string prefix;         // its bytes
    std::size_t announced = 0;  // bytes of text, according to the prefix
};

/// Assembles frames from bytes that arrive in pieces of any size.
class FrameDecoder {
 public:
    /// From now on tolerates a wrong announced length: a text ends where its document does, and what follows
    /// is the next frame.
    void AcceptSizeErrors() { acceptsSizeErrors_ = true; }

    /// The next frame, if it announces `announced` bytes, is handed out once `size` bytes of its text have
    /// arrived.
    void ExpectSizeError(std::size_t announced, std::size_t size) { expected_ = {announced, size}; }

    /// From now on accepts only texts of at most this many bytes.
    void Limit(std::size_t mostTextBytes) { mostTextBytes_ = mostTextBytes; }

    /// From now on has these flaws, which must outlive the decoder.
    void Weaken(Flaws& flaws) { flaws_ = &flaws; }

    /// Adds `count` bytes that have arrived.
    void Append(const char* bytes, std::size_t count);

    /// Drops what has come and is not handed out.
    void Discard();

    /// @return the text of the next whole frame; nothing while more bytes are needed
    /// Throws Breach for a prefix of more than five bytes or that announces more than is accepted.
    std::optional<std::string> NextText();

    /// For when no more bytes of the begun frame will come.
    /// @return what has come of its text, up to the document's end; nothing if size errors are not accepted,
    /// or if even its prefix is incomplete
    std::optional<std::string> GiveUp();

    /// @return the frame of the text that was handed out last
    const ReceivedFrame& LastFrame() const { return last_; }

    /// @return whether a frame has begun and is not yet whole. Call it after NextText has returned nothing.
    bool InsideFrame() const;

    /// @return how much of the begun frame has come, for people: "announced 450, got 300"
    std::string Progress() const;

 private:
    struct SizeError {
        std::size_t announced;
        std::size_t size;
    };

    bool ReadPrefix();
    void Announce(std::size_t prefixBytes, std::uint64_t length);
    bool Shows(Flaw flaw, std::uint64_t measure) const;
    std::string TakeText(std::size_t size);

    std::string bytes_;  // received and not yet handed out, without the prefix once it is read
    std::optional<std::size_t> announced_;  // length of the text that bytes_ starts with
    std::string prefix_;                    // that announced it
    ReceivedFrame last_;
    std::size_t mostTextBytes_ = kMaxTextBytes;
    bool acceptsSizeErrors_ = false;
    std::optional<SizeError> expected_;
    Flaws* flaws_ = nullptr;
};

}  // namespace rig::dvr
