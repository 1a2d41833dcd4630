#include "rig/dvr/wire/Frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

#include "rig/base/Counted.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/wire/Markup.h"

namespace rig::dvr {
namespace {

/// @return the size of the document at the start of the text. Blanks after it belong to it: no frame begins
/// with one.
std::size_t SizeOfDocument(const std::string& text) {
    const std::optional<std::size_t> end = DocumentEnd(text);
    return end && text.find_first_not_of(" \t\r\n", *end) != std::string::npos ? *end : text.size();
}

}  // namespace

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

void FrameDecoder::Discard() {
    bytes_.clear();
    announced_.reset();
}

std::optional<std::string> FrameDecoder::NextText() {
    if (!announced_ && !ReadPrefix()) {
        return std::nullopt;
    }
    const std::size_t size = expected_ && expected_->announced == *announced_ ? expected_->size : *announced_;
    if (bytes_.size() < size) {
        const bool isPiece = flaws_ != nullptr && !bytes_.empty() && !DocumentEnd(bytes_);
        return isPiece && Shows(Flaw::TakesPiece, 0) ? std::optional(TakeText(bytes_.size())) : std::nullopt;
    }
    return TakeText(acceptsSizeErrors_ ? SizeOfDocument(bytes_.substr(0, size)) : size);
}

std::optional<std::string> FrameDecoder::GiveUp() {
    if (!acceptsSizeErrors_ || !announced_) {
        return std::nullopt;
    }
    return TakeText(SizeOfDocument(bytes_));
}

std::string FrameDecoder::TakeText(std::size_t size) {
    std::string text = bytes_.substr(0, size);
    bytes_.erase(0, size);
    last_ = {prefix_, *announced_};
    announced_.reset();
    expected_.reset();
    return text;
}

bool FrameDecoder::ReadPrefix() {
    std::uint64_t length = 0;
    for (std::size_t index = 0; index < bytes_.size() && index < kMaxPrefixBytes; ++index) {
        const auto byte = static_cast<unsigned char>(bytes_[index]);
        length |= static_cast<std::uint64_t>(byte & 0x7f) << (7 * index);
        if ((byte & 0x80) == 0 || (index == 1 && Shows(Flaw::TwoBytePrefix, 0))) {
            Announce(index + 1, length);
            return true;
        }
    }
    if (bytes_.size() >= kMaxPrefixBytes) {
        Shows(Flaw::EndlessPrefix, 0);
        throw Breach("a length prefix of more than five bytes");
    }
    return false;
}

void FrameDecoder::Announce(std::size_t prefixBytes, std::uint64_t length) {
    constexpr std::uint64_t kMuch = std::uint64_t{1} << 30;
    constexpr std::uint64_t kSign = std::uint64_t{1} << 31;
    if (length >= kMuch) {
        Shows(length < kSign ? Flaw::TrustsLength : Flaw::SignedLength, length);
    }
    if (length > mostTextBytes_) {
        throw Breach(fmt::format("a length prefix that announces {} bytes (at most {} are accepted)", length,
                                 mostTextBytes_));
    }
    prefix_ = bytes_.substr(0, prefixBytes);
    bytes_.erase(0, prefixBytes);
    announced_ = static_cast<std::size_t>(length);
}

bool FrameDecoder::Shows(Flaw flaw, std::uint64_t measure) const {
    const std::uint64_t most = SIZE_MAX;
    return flaws_ != nullptr && flaws_->Show(flaw, static_cast<std::size_t>(std::min(measure, most)));
}

bool FrameDecoder::InsideFrame() const {
    return announced_.has_value() || !bytes_.empty();
}

std::string FrameDecoder::Progress() const {
    if (!announced_) {
        return "an unfinished length prefix of " + Counted(bytes_.size(), "byte");
    }
    const std::size_t size = SizeOfDocument(bytes_);
    const std::size_t rest = bytes_.size() - size;
    return fmt::format("announced {}, got {}", *announced_, size) +
           (rest > 0 ? " and " + Counted(rest, "byte") + " after the end of the document" : "");
}

}  // namespace rig::dvr
