#pragma once

#include <cstdint>
#include <optional>

#include "rig/log/Statement.h"

namespace rig::campaign {

/// Reads in the harness's log how long it paused of its own accord (after each piece that it reads, after
/// requests for files, before closing) and how long it waited for the DVR.
class LogTimes {
 public:
    void Add(const log::Statement& statement);

    /// Seconds.
    double Pauses() const { return static_cast<double>(pauses_) / 1e6; }
    double Waits() const { return static_cast<double>(waits_) / 1e6; }

 private:
    void Count(std::int64_t gap, std::int64_t atMostPause);

    std::optional<std::int64_t> last_;  // microseconds
    std::int64_t pauses_ = 0;
    std::int64_t waits_ = 0;
    std::int64_t sleep_ = 1'000'000;  // -s
    bool sleepsNext_ = false;         // after the request that goes out next
};

}  // namespace rig::campaign
