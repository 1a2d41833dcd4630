#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace rig::log {

/// The incoming message, assembled from the slices in which the harness logs it.
class Incoming {
 public:
    /// The harness has read a length prefix. @return whether the message before it was whole
    bool Expect(std::int64_t bytes, std::optional<std::int64_t> time);

    /// Adds a slice: "1 to 800:TEXT", escaped. @return whether its message is not too long
    bool Add(std::string_view slice);

    /// @return whether all announced bytes are there
    bool IsWhole() const { return !isOpen_; }

    const std::string& Text() const { return text_; }

    /// @return whether the message is the same, byte for byte, as the previous one that Remember() was called
    /// for
    bool IsRepeated() const { return text_ == before_; }
    void Remember() { before_.swap(text_); }

    /// @return when the prefix was complete, microseconds
    std::optional<std::int64_t> Time() const { return time_; }

 private:
    std::int64_t expected_ = 0;  // bytes
    bool isOpen_ = false;
    std::string text_;
    std::string before_;
    std::optional<std::int64_t> time_;
};

}  // namespace rig::log
