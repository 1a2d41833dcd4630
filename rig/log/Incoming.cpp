#include "rig/log/Incoming.h"

namespace rig::log {
namespace {

constexpr std::size_t kLongest = std::size_t{64} << 20;  // bytes: memory must not grow with the log

}  // namespace

bool Incoming::Expect(const Statement& announcement) {
    const bool wasWhole = !isOpen_;
    announced_ = announcement.Number();
    time_ = announcement.time;
    if (isRemembered_) {
        before_.swap(text_);
        isRemembered_ = false;
    }
    text_.clear();
    isOpen_ = true;
    return wasWhole;
}

bool Incoming::AddSlice(const Statement& slice) {
    const std::size_t colon = slice.detail.find(':');  // "1 to 800:TEXT"
    if (!isOpen_ || colon == std::string_view::npos || text_.size() > kLongest) {
        isOpen_ = isOpen_ && text_.size() <= kLongest;
        return false;
    }
    AppendUnescaped(text_, slice.detail.substr(colon + 1));
    isOpen_ = static_cast<std::int64_t>(text_.size()) < announced_;
    return true;
}

}  // namespace rig::log
