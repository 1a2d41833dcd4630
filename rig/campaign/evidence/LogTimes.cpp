#include "rig/campaign/evidence/LogTimes.h"

#include <algorithm>

#include "rig/log/Numbers.h"
#include "rig/log/Signs.h"

namespace rig::campaign {
namespace {

constexpr std::int64_t kPauseAfterRead = log::kSecond / 4;
constexpr std::int64_t kPauseAheadOfClosing = log::kSecond;

}  // namespace

void LogTimes::Add(const log::LogLine& line) {
    const log::Sign sign = log::SignOf(line.text);
    const std::int64_t gap = line.time && last_ ? *line.time - *last_ : 0;
    last_ = line.time ? line.time : last_;
    if (sign == log::Sign::SleepSwitch) {
        const std::int64_t seconds = log::NumberIn(log::Behind(sign, line.text));
        sleep_ = std::clamp<std::int64_t>(seconds, 0, INT32_MAX) * log::kSecond;
    } else if (sign == log::Sign::FilesLeft) {
        sleepsNext_ = log::NumberIn(log::Behind(sign, line.text)) > 1;
    } else if (sign == log::Sign::Expecting) {
        Count(gap, sleepsNext_ ? sleep_ : 0);
        sleepsNext_ = false;
    } else if (sign == log::Sign::ClosingClient) {
        Count(gap, kPauseAheadOfClosing);
    } else if (sign == log::Sign::Connected) {
        Count(gap, 0);
    } else if (line.text.substr(0, 12) == "read success") {
        Count(gap, kPauseAfterRead);
    }
}

/// Time beyond the pause was spent waiting.
void LogTimes::Count(std::int64_t gap, std::int64_t atMostPause) {
    const std::int64_t pause = std::clamp<std::int64_t>(gap, 0, atMostPause);
    pauses_ += pause;
    waits_ += std::max<std::int64_t>(gap - pause, 0);
}

}  // namespace rig::campaign
