#include "rig/campaign/execution/Rounds.h"

#include <fmt/format.h>

namespace rig::campaign {

void Rounds::Ask(const std::string& words) {
    if (!current_.empty()) {
        Close();
    }
    current_ = words;
}

void Rounds::Answer(const std::string& words) {
    if (!current_.empty()) {
        current_ += ", " + words;
    }
}

void Rounds::Close() {
    for (std::size_t length = 1; length <= kLongest; ++length) {
        int& alike = alike_[length - 1];
        alike = past_.size() >= length && past_[length - 1] == current_ ? alike + 1 : 0;
        if (endless_.empty() && alike == static_cast<int>(length) * (kMost - 1)) {
            endless_ = fmt::format("{} times in a row, with nothing new: ", kMost);
            for (std::size_t at = length - 1; at > 0; --at) {
                endless_ += past_[at - 1] + "; ";
            }
            endless_ += current_;
        }
    }
    past_.push_front(current_);
    if (past_.size() > kLongest) {
        past_.pop_back();
    }
}

}  // namespace rig::campaign
