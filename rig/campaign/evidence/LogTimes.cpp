#include "rig/campaign/evidence/LogTimes.h"

#include <algorithm>

namespace rig::campaign {
namespace {

constexpr std::int64_t kPauseAfterRead = log::kSecond / 4;
constexpr std::int64_t kPauseBeforeClosing = log::kSecond;

}  // namespace

void LogTimes::Add(const log::Statement& statement) {
    const std::int64_t gap = statement.time && last_ ? *statement.time - *last_ : 0;
    last_ = statement.time ? statement.time : last_;
    switch (statement.sign) {
        case log::Sign::SleepSwitch:
            sleep_ = std::clamp<std::int64_t>(statement.Number(), 0, INT32_MAX) * log::kSecond;
            break;
        case log::Sign::FilesLeft:
            sleepsNext_ = statement.Number() > 1;
            break;
        case log::Sign::Expecting:
            Count(gap, sleepsNext_ ? sleep_ : 0);
            sleepsNext_ = false;
            break;
        case log::Sign::ClosingClient:
            Count(gap, kPauseBeforeClosing);
            break;
        case log::Sign::Connected:
            Count(gap, 0);
            break;
        case log::Sign::TextRead:
            Count(gap, kPauseAfterRead);
            break;
        default:
            break;
    }
}

/// Time beyond the pause was spent waiting.
void LogTimes::Count(std::int64_t gap, std::int64_t atMostPause) {
    const std::int64_t pause = std::clamp<std::int64_t>(gap, 0, atMostPause);
    pauses_ += pause;
    waits_ += std::max<std::int64_t>(gap - pause, 0);
}

}  // namespace rig::campaign
