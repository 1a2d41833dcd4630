#include "rig/campaign/evidence/LogTimes.h"

#include <algorithm>

#include "rig/log/Numbers.h"
#include "rig/log/Signs.h"

namespace rig::campaign {
namespace {

constexpr std::int64_t kPauseAfterRead = kSecond / 4;
constexpr std::int64_t kPauseAheadOfClosing = kSecond;

}  // namespace

void LogTimes::Add(const LogLine& line) {
    const judge::Sign sign = judge::SignOf(line.text);
    const std::int64_t gap = line.time && last_ ? *line.time - *last_ : 0;
    last_ = line.time ? line.time : last_;
    if (sign == judge::Sign::SleepSwitch) {
        const std::int64_t seconds = judge::NumberIn(judge::Behind(sign, line.text));
        sleep_ = std::clamp<std::int64_t>(seconds, 0, INT32_MAX) * kSecond;
    } else if (sign == judge::Sign::FilesLeft) {
        sleepsNext_ = judge::NumberIn(judge::Behind(sign, line.text)) > 1;
    } else if (sign == judge::Sign::Expecting) {
        Count(gap, sleepsNext_ ? sleep_ : 0);
        sleepsNext_ = false;
    } else if (sign == judge::Sign::ClosingClient) {
        Count(gap, kPauseAheadOfClosing);
    } else if (sign == judge::Sign::Connected) {
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
