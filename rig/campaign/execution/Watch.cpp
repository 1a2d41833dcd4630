#include "rig/campaign/execution/Watch.h"

#include <fmt/format.h>

#include <algorithm>

namespace rig::campaign {
namespace {

constexpr double kMargin = 0.2;  // seconds, so that the judge also counts the patience as over

double Seconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

void Watch::Add(const log::Statement& statement, bool isOver, Clock::time_point now) {
    const log::Sign sign = statement.sign;
    lastLine_ = now;
    isConnected_ = isConnected_ || sign == log::Sign::Connected || sign == log::Sign::Expecting;
    isSent_ = isSent_ || sign == log::Sign::SentWrongSize;
    isRefused_ = isRefused_ || sign == log::Sign::ConfigRefused;
    isConfirmed_ = isConfirmed_ || sign == log::Sign::UpdateConfirmed;
    const bool isConfigured = Has(plan_, 'g') && isRefused_ && (isConfirmed_ || !Has(plan_, 'u'));
    // A harness that could not listen, or was interrupted, is also over, but no dialogue came to its end.
    const bool isEnd = isOver && isConnected_ && sign != log::Sign::ShuttingDown;
    isDone_ = isDone_ || isEnd || isConfigured;
}

void Watch::DvrFailed(Clock::time_point now) {
    dvrFailed_ = dvrFailed_.value_or(now);
}

double Watch::SilentFor(Clock::time_point now) const {
    return Seconds(now - lastLine_);
}

double Watch::LeftToConnect(Clock::time_point now) const {
    return std::max(patience_.connect - Seconds(now - begin_), 0.0);
}

End Watch::Look(Clock::time_point now, std::string& words) const {
    const double enough = patience_.answer + kMargin;
    if (isDone_) {
        return End::Done;
    }
    if (isSent_ && SilentFor(now) >= enough) {
        return End::Silence;
    }
    if (bytes_ > kLargestLog) {
        words = fmt::format("the log grew beyond {} MiB", kLargestLog >> 20);
        return End::LogTooLarge;
    }
    if (dvrFailed_ && Seconds(now - *dvrFailed_) >= enough && SilentFor(now) >= enough) {
        return End::DvrFailed;
    }
    if (!isConnected_ && LeftToConnect(now) <= 0) {
        words = fmt::format("connect time-out: no DVR connected within {:g} s", patience_.connect);
        return End::ConnectTimeout;
    }
    if (isConnected_ && SilentFor(now) >= patience_.idle) {
        words = fmt::format("idle time-out: no new line in the log for {:g} s", patience_.idle);
        return End::IdleTimeout;
    }
    if (Seconds(now - begin_) >= patience_.whole) {
        words = fmt::format("case time-out: the export did not end within {:g} s", patience_.whole);
        return End::CaseTimeout;
    }
    return End::None;
}

}  // namespace rig::campaign
