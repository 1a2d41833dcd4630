#include "rig/dvr/Transfer.h"

#include <algorithm>

namespace rig {
namespace {

constexpr Milliseconds kLook(100);
constexpr Milliseconds kLong(500);
constexpr std::chrono::hours kLongest(24 * 365 * 30);  // as a clock's time cannot be much later

}  // namespace

Clock::duration TransferPace::TimeFor(std::uint64_t length) const {
    if (rate == 0) {
        return each;
    }
    const std::chrono::duration<double> time(static_cast<double>(length) / static_cast<double>(rate));
    return time < kLongest ? std::chrono::ceil<Clock::duration>(time) : kLongest;
}

Transfer::Transfer(const std::pair<std::string, std::string>& file, std::uint64_t length,
                   const TransferPace& pace, const DeliveryFolder* folder, Clock::time_point start)
    : file_(file), length_(length), start_(start), time_(pace.TimeFor(length)), nextLook_(start) {
    if (folder != nullptr) {
        copy_.emplace(*folder, file.first, file.second);
    }
}

void Transfer::Advance(Clock::time_point now) {
    const bool timeIsOver = now >= start_ + time_;
    if (copy_) {
        // In the end to where the file ends, which may not be where it did when the transfer started.
        if (!CopyUpTo(timeIsOver ? UINT64_MAX : DueAt(now))) {
            nextLook_ = now;
            return;
        }
    } else {
        done_ = DueAt(now);
    }
    if (timeIsOver && copy_) {
        copy_->Complete();
    }
    over_ = timeIsOver;
    nextLook_ = std::min(start_ + time_, now + kLook);
}

bool Transfer::IsLong(Clock::time_point now) const {
    return time_ > kLong || now - start_ > kLong;
}

/// Copies one piece at most. @return whether the copy is as far as is due, or at its end
bool Transfer::CopyUpTo(std::uint64_t due) {
    if (done_ >= due) {
        return true;
    }
    const std::size_t count = std::min<std::uint64_t>(due - done_, Delivery::kMostBytes);
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

}  // namespace rig
