#include "rig/dvr/dialogue/Transfer.h"

#include <algorithm>

namespace rig::dvr {
namespace {

constexpr Milliseconds kInterval(100);
constexpr Milliseconds kLong(500);
constexpr std::chrono::hours kLongest(24 * 365 * 30);  // as clocks cannot go much further

}  // namespace

Clock::duration TransferPace::TimeFor(std::uint64_t length) const {
    if (!rate) {
        return each;
    }
    const std::chrono::duration<double> time(static_cast<double>(length) / static_cast<double>(*rate));
    return time < kLongest ? std::chrono::ceil<Clock::duration>(time) : kLongest;
}

Transfer::Transfer(const std::pair<std::string, std::string>& file, std::uint64_t length,
                   const TransferPace& pace, const DeliveryFolder* folder, Clock::time_point start)
    : file_(file),
      length_(length),
      start_(start),
      time_(pace.TimeFor(length)),
      lateness_(pace.lateness),
      nextAdvance_(start) {
    if (folder != nullptr) {
        copy_.emplace(*folder, file.first, file.second);
    }
}

void Transfer::Advance(Clock::time_point now) {
    if (!complete_) {
        Continue(now);
    }
    over_ = complete_ && now >= nextAdvance_;
}

void Transfer::Continue(Clock::time_point now) {
    const bool timeIsOver = now >= start_ + time_;
    if (copy_) {
        // In the end up to the end of the file, which may have moved since the transfer started.
        if (!CopyUpTo(timeIsOver ? UINT64_MAX : DueAt(now))) {
            nextAdvance_ = now;
            return;
        }
    } else {
        done_ = DueAt(now);
    }
    if (timeIsOver && copy_) {
        copy_->Complete();
    }
    complete_ = timeIsOver;
    nextAdvance_ = complete_ ? now + lateness_ : std::min(start_ + time_, now + kInterval);
}

bool Transfer::IsLong(Clock::time_point now) const {
    return time_ > kLong || now - start_ > kLong;
}

/// Copies at most one piece. @return whether the copy has got as far as is due, or to its end
bool Transfer::CopyUpTo(std::uint64_t due) {
    if (done_ >= due) {
        return true;
    }
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(due - done_, Delivery::kMostBytes));
    const std::size_t copied = copy_->Copy(count);
    done_ += copied;
    return copied < count || done_ >= due;
}

std::uint64_t Transfer::DueAt(Clock::time_point now) const {
    if (now >= start_ + time_) {
        return length_;
    }
    const std::chrono::duration<double> elapsed = now - start_;
    return static_cast<std::uint64_t>(static_cast<double>(length_) *
                                      (elapsed / std::chrono::duration<double>(time_)));
}

}  // namespace rig::dvr
