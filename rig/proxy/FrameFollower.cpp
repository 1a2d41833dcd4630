#include "rig/proxy/FrameFollower.h"

#include <algorithm>
#include <pugixml.hpp>
#include <utility>

#include "rig/protocol/Prefix.h"

namespace rig::proxy {

void FrameFollower::Follow(const char* bytes, std::size_t count, const Whole& whole) {
    for (std::size_t taken = 0; taken < count;) {
        if (IsInPrefix()) {
            AddToPrefix(static_cast<unsigned char>(bytes[taken++]));
        } else {
            taken += AddToText(bytes + taken, count - taken);
        }
        if (frame_.announced && frame_.textBytes == *frame_.announced) {
            TakeNames(text_, frame_);
            whole(std::exchange(frame_, {}), std::exchange(text_, {}));
        }
    }
}

void FrameFollower::AddToPrefix(unsigned char byte) {
    length_ |= static_cast<std::uint32_t>(byte & 0x7f) << (7 * frame_.prefixBytes);
    ++frame_.prefixBytes;
    if ((byte & 0x80) == 0) {
        frame_.announced = std::exchange(length_, 0);
    }
    isLost_ = !frame_.announced && frame_.prefixBytes == protocol::kMaxPrefixBytes;
}

/// @return how many of the bytes belong to the frame's text
std::size_t FrameFollower::AddToText(const char* bytes, std::size_t count) {
    const std::uint64_t left = isLost_ ? count : *frame_.announced - frame_.textBytes;
    const auto taken = static_cast<std::size_t>(std::min<std::uint64_t>(count, left));
    if (frame_.announced && *frame_.announced <= kMostKeptBytes) {
        text_.append(bytes, taken);
    }
    frame_.textBytes += taken;
    return taken;
}

std::optional<FollowedFrame> FrameFollower::Unfinished() const {
    return frame_.prefixBytes == 0 ? std::nullopt : std::optional<FollowedFrame>(frame_);
}

void TakeNames(const std::string& text, FollowedFrame& frame) {
    pugi::xml_document document;
    document.load_buffer(text.data(), text.size(), pugi::parse_default, pugi::encoding_utf8);
    const pugi::xml_node message = document.child("msg");
    frame.message = message.attribute("req").value();
    const char* const event = message.attribute("reid") ? "reid" : "path";
    if (const pugi::xml_attribute reid = message.attribute(event)) {
        frame.reid = reid.value();
    }
    if (const pugi::xml_attribute file = message.attribute("file")) {
        frame.file = file.value();
    }
}

}  // namespace rig::proxy
