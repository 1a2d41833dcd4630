#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "rig/dvr/recordings/Delivery.h"
#include "rig/dvr/wire/Connection.h"

namespace rig::dvr {

/// How long the transfer of a file takes.
struct TransferPace {
    Milliseconds each{200};               // unless there is a rate: however long the file is
    std::optional<std::uint64_t> rate{};  // bytes per second
    Milliseconds lateness{0};             // from its completion to its end

    /// @return the time for a file of `length` bytes, at most 30 years
    Clock::duration TimeFor(std::uint64_t length) const;
};

/// One file in transfer: how far it is at a given time, and its copy, if one is made. Whoever drives it calls
/// Advance, at NextAdvance() or later, until it is over. It has no clock of its own.
class Transfer {
 public:
    /// @param file    event and file name
    /// @param length  bytes
    /// @param folder  takes the copy; null: none is made. Must outlive the transfer.
    /// Throws Failure (Unusable), as does Advance, when the copy cannot be made.
    Transfer(const std::pair<std::string, std::string>& file, std::uint64_t length, const TransferPace& pace,
             const DeliveryFolder* folder, Clock::time_point start);

    /// Brings the transfer to where it should be at `now`. A copy that lags catches up by one piece at a
    /// time, so that other things get their turn, and prolongs the transfer. It gets its final name when the
    /// file is complete.
    void Advance(Clock::time_point now);

    /// @return when to call Advance again; nothing changes before then
    Clock::time_point NextAdvance() const { return nextAdvance_; }

    bool IsOver() const { return over_; }

    const std::pair<std::string, std::string>& File() const { return file_; }
    std::uint64_t Length() const { return length_; }
    std::uint64_t Done() const { return done_; }  // bytes, of Length()

    /// @return whether it takes so long that people should see its progress
    bool IsLong(Clock::time_point now) const;

 private:
    void Continue(Clock::time_point now);
    std::uint64_t DueAt(Clock::time_point now) const;
    bool CopyUpTo(std::uint64_t due);

    std::pair<std::string, std::string> file_;
    std::uint64_t length_;
    std::uint64_t done_ = 0;  // bytes; those copied, if a copy is made
    Clock::time_point start_;
    Clock::duration time_;
    Milliseconds lateness_;
    Clock::time_point nextAdvance_;
    std::optional<Delivery> copy_;
    bool complete_ = false;
    bool over_ = false;
};

}  // namespace rig::dvr
