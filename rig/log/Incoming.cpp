#include "rig/log/Incoming.h"

#include "rig/log/LogLine.h"

namespace rig::log {
namespace {

constexpr std::size_t kLongest = std::size_t{64} << 20;  // bytes: memory must not grow with the log

}  // namespace

bool Incoming::Expect(std::int64_t bytes, std::optional<std::int64_t> time) {
    const bool wasWhole = !isOpen_;
    expected_ = bytes;
    time_ = time;
    text_.clear();
    isOpen_ = true;
    return wasWhole;
}

bool Incoming::Add(std::string_view slice) {
    const std::size_t colon = slice.find(':');
    if (!isOpen_ || colon == std::string_view::npos || text_.size() > kLongest) {
        isOpen_ = isOpen_ && text_.size() <= kLongest;
        return false;
    }
    text_ += Unescaped(slice.substr(colon + 1));
    isOpen_ = static_cast<std::int64_t>(text_.size()) < expected_;
    return true;
}

}  // namespace rig::log
