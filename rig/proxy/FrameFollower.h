#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace rig::proxy {

/// A frame, or as much of one as has come.
struct FollowedFrame {
    std::string message;  // its `req`; empty if it cannot be read
    std::size_t prefixBytes = 0;
    std::uint64_t textBytes = 0;  // without the prefix
    std::optional<std::uint32_t> announced =
        {};                                // what the prefix says of the text; nothing: it has not ended
    std::optional<std::string> reid = {};  // the event that it names; in GET_FILE of 1.0 that is its `path`
    std::optional<std::string> file = {};
};

/// Longer texts are counted and not kept, so that no peer can make a follower grow.
constexpr std::size_t kMostKeptBytes = std::size_t{64} * 1024;

/// Finds the frames in one direction of a connection, from bytes in pieces of any size. It believes what a
/// prefix announces, and the low 32 bits of it, as the harness does. After a prefix that does not end in time
/// there are no more frames: all that follows counts as the text of that one.
class FrameFollower {
 public:
    /// Takes a frame, and its text unless that is too long to keep.
    using Whole = std::function<void(const FollowedFrame& frame, const std::string& text)>;

    /// Follows the stream over the next `count` bytes, and calls `whole` for each frame that ends in them.
    void Follow(const char* bytes, std::size_t count, const Whole& whole);

    /// @return the frame that has begun and is not whole; nothing between two frames
    std::optional<FollowedFrame> Unfinished() const;

 private:
    bool IsInPrefix() const { return !frame_.announced && !isLost_; }
    void AddToPrefix(unsigned char byte);
    std::size_t AddToText(const char* bytes, std::size_t count);

    FollowedFrame frame_;
    std::uint32_t length_ = 0;  // that the prefix has announced so far
    bool isLost_ = false;       // the prefix does not end
    std::string text_;          // of the frame, unless it is too long to keep
};

/// Takes what the text's top-level element `msg` says, as far as the text is XML.
void TakeNames(const std::string& text, FollowedFrame& frame);

}  // namespace rig::proxy
