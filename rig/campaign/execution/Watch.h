#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "rig/campaign/Cases.h"
#include "rig/campaign/Outcome.h"
#include "rig/log/Statement.h"

namespace rig::campaign {

using Clock = std::chrono::steady_clock;

/// Bytes: a longer log means that the harness repeats itself forever.
constexpr std::uint64_t kLargestLog = std::uint64_t{16} << 20;

/// Decides from the log's lines and the clock when there is nothing more to watch in a run.
class Watch {
 public:
    /// @param now  when the harness is started; the time-outs count from here
    Watch(Case plan, const Patience& patience, Clock::time_point now)
        : plan_(std::move(plan)), patience_(patience), begin_(now), lastLine_(now) {}

    /// Takes the next line of the log. @param isOver  whether the judge says that it ends the run
    void Add(const log::Statement& statement, bool isOver, Clock::time_point now);

    /// The DVR's command has ended with a status other than 0.
    void DvrFailed(Clock::time_point now);

    /// The log has reached this size, in bytes.
    void LogHas(std::uint64_t bytes) { bytes_ = bytes; }

    /// @return why to stop watching, which `words` then says; End::None to go on.
    End Look(Clock::time_point now, std::string& words) const;

    bool IsConnected() const { return isConnected_; }

    /// @return whether the dialogue has come to its end
    bool IsDone() const { return isDone_; }

    /// @return seconds until the connection counts as missing; never negative
    double LeftToConnect(Clock::time_point now) const;

    /// @return seconds since the last line, or since the start
    double SilentFor(Clock::time_point now) const;

 private:
    Case plan_;
    Patience patience_;
    Clock::time_point begin_;
    Clock::time_point lastLine_;
    std::optional<Clock::time_point> dvrFailed_;
    std::uint64_t bytes_ = 0;
    bool isConnected_ = false;
    bool isDone_ = false;
    bool isSent_ = false;       // -z: a frame with a wrong prefix
    bool isRefused_ = false;    // -g
    bool isConfirmed_ = false;  // -u
};

}  // namespace rig::campaign
