#include "rig/dvr/Frame.h"

#include <stdexcept>

#include "rig/dvr/Failure.h"

namespace rig {

std::string EncodePrefix(std::uint32_t length) {
    std::string prefix;
    while (length > 0x7f) {
        prefix += static_cast<char>((length & 0x7f) | 0x80);
        length >>= 7;
    }
    prefix += static_cast<char>(length);
    return prefix;
}

std::string EncodeFrame(const std::string& text) {
    if (text.size() > UINT32_MAX) {
        throw std::length_error("a frame of 4 GiB or more cannot be announced");
    }
    return EncodePrefix(static_cast<std::uint32_t>(text.size())) + text;
}

void FrameDecoder::Append(const char* bytes, std::size_t count) {
    bytes_.append(bytes, count);
}

std::optional<std::string> FrameDecoder::Next() {
    if (!announced_ && !ReadPrefix()) {
        return std::nullopt;
    }
    if (bytes_.size() < *announced_) {
        return std::nullopt;
    }
    std::string text = bytes_.substr(0, *announced_);
    bytes_.erase(0, *announced_);
    announced_.reset();
    return text;
}

bool FrameDecoder::ReadPrefix() {
    std::uint64_t length = 0;
    for (std::size_t index = 0; index < bytes_.size() && index < kMaxPrefixBytes; ++index) {
        const auto byte = static_cast<unsigned char>(bytes_[index]);
        length |= static_cast<std::uint64_t>(byte & 0x7f) << (7 * index);
        if ((byte & 0x80) == 0) {
            if (length > kMaxTextBytes) {
                throw Breach("a length prefix that announces " + std::to_string(length) + " bytes (at most " +
                             std::to_string(kMaxTextBytes) + " are taken)");
            }
            bytes_.erase(0, index + 1);
            announced_ = static_cast<std::size_t>(length);
            return true;
        }
    }
    if (bytes_.size() >= kMaxPrefixBytes) {
        throw Breach("a length prefix of more than five bytes");
    }
    return false;
}

bool FrameDecoder::InsideFrame() const {
    return announced_.has_value() || !bytes_.empty();
}

std::string FrameDecoder::Progress() const {
    if (!announced_) {
        return "an unfinished length prefix of " + std::to_string(bytes_.size()) + " bytes";
    }
    return "announced " + std::to_string(*announced_) + ", got " + std::to_string(bytes_.size());
}

}  // namespace rig
