#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rig/log/Statement.h"

namespace rig::log {

/// The incoming message, assembled from the slices in which the harness logs it.
class Incoming {
 public:
    /// The harness has read a length prefix. @return whether the message before it was whole
    bool Expect(const Statement& announcement);

    /// Adds a slice. @return whether it belongs to a message that was announced and is not too long
    bool AddSlice(const Statement& slice);

    /// @return whether all announced bytes have come
    bool IsWhole() const { return !isOpen_; }

    /// @return bytes that the prefix announces
    std::int64_t Announced() const { return announced_; }

    /// @return what has come, byte for byte
    const std::string& Text() const { return text_; }

    /// @return whether the message equals, byte for byte, the last one that was remembered
    bool IsRepeated() const { return text_ == before_; }
    void Remember() { isRemembered_ = true; }

    /// @return when the prefix was complete, microseconds
    std::optional<std::int64_t> Time() const { return time_; }

 private:
    std::int64_t announced_ = 0;
    bool isOpen_ = false;
    std::string text_;
    std::string before_;
    bool isRemembered_ = false;  // the text becomes the one before when another begins
    std::optional<std::int64_t> time_;
};

}  // namespace rig::log
