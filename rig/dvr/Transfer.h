#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "rig/dvr/Connection.h"
#include "rig/dvr/Delivery.h"

namespace rig {

/// How long the transfer of a file takes.
struct TransferPace {
    Milliseconds each{200};  // unless there is a rate: however long the file is
    std::uint64_t rate = 0;  // bytes a second; 0: there is none

    /// @return the time for a file of so many bytes, 30 years at most
    Clock::duration TimeFor(std::uint64_t length) const;
};

/// One file in transfer: how far it is at a given time, and its copy, where one is made. Whoever drives it
/// lets it advance, at NextLook() or later, until it is over. It knows no clock of its own.
class Transfer {
 public:
    /// @param file    event and file name
    /// @param length  bytes
    /// @param folder  takes the copy; null: none is made. Must outlive the transfer.
    /// Throws Failure (UsageError), as Advance, when the copy cannot be made.
    Transfer(const std::pair<std::string, std::string>& file, std::uint64_t length, const TransferPace& pace,
             const DeliveryFolder* folder, Clock::time_point start);

    /// Brings the transfer to where it should be at `now`. A copy that lags behind only comes nearer, so that
    /// there is time for other things, and prolongs the transfer. It appears under its name when that is
    /// over.
    void Advance(Clock::time_point now);

    /// @return when there is something to do again; not before that time has anything changed
    Clock::time_point NextLook() const { return nextLook_; }

    bool IsOver() const { return over_; }

    const std::pair<std::string, std::string>& File() const { return file_; }
    std::uint64_t Length() const { return length_; }
    std::uint64_t Done() const { return done_; }  // bytes, of Length()

    /// @return whether it takes so long that people should be shown how far it is
    bool IsLong(Clock::time_point now) const;

 private:
    std::uint64_t DueAt(Clock::time_point now) const;
    bool CopyUpTo(std::uint64_t due);

    std::pair<std::string, std::string> file_;
    std::uint64_t length_;
    std::uint64_t done_ = 0;  // bytes; where a copy is made, those copied
    Clock::time_point start_;
    Clock::duration time_;
    Clock::time_point nextLook_;
    std::optional<Delivery> copy_;
    bool over_ = false;
};

}  // namespace rig
