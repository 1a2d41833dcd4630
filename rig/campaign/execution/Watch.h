#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "rig/campaign/Cases.h"
#include "rig/campaign/Outcome.h"
#include "rig/campaign/execution/Rounds.h"
#include "rig/judge/Judge.h"

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

    /// Takes the next statement of the log, and what it completes. @param isOver  whether the judge says that
    /// it ends the run
    void Add(const judge::ReadLine& read, bool isOver, Clock::time_point now);

    /// The DVR's command has ended with a status other than 0.
    void DvrFailed(Clock::time_point now);

    /// The DVR has closed the connection.
    void ConnectionClosed();

    /// The log has reached this size, in bytes.
    void LogHas(std::uint64_t bytes) { bytes_ = bytes; }

    /// @return why to stop watching, which `words` then says; End::None to go on.
    End Look(Clock::time_point now, std::string& words) const;

    bool IsConnected() const { return isConnected_; }

    /// @return whether the dialogue has come to its end
    bool IsDone() const { return isDone_; }

    /// @return when the first DVR connected, and when the last DONE went out; nothing if it has not happened
    std::optional<Clock::time_point> ConnectedAt() const { return connected_; }
    std::optional<Clock::time_point> DoneAt() const { return done_; }

    /// @return the port that the first DVR called from; 0 if none did
    std::uint16_t FirstCaller() const { return firstCaller_; }

    /// @return when the DVR was first heard again after DONE
    std::optional<Clock::time_point> HeardAgainAt() const { return heardAgain_; }

    /// @return seconds until the connection counts as missing; never negative
    double LeftToConnect(Clock::time_point now) const;

    /// @return seconds since the last line, or since the start
    double SilentFor(Clock::time_point now) const;

 private:
    struct DeadEnd {
        End end;
        std::string words;
        double seconds;  // of silence after which it counts
    };

    void Note(const log::Statement& statement, Clock::time_point now);
    void Follow(const judge::ReadLine& read);
    void TakeMessage(const log::Message& message);
    void Meet(DeadEnd deadEnd);

    Case plan_;
    Patience patience_;
    Clock::time_point begin_;
    Clock::time_point lastLine_;
    std::optional<Clock::time_point> dvrFailed_;
    std::optional<Clock::time_point> connected_;
    std::uint16_t firstCaller_ = 0;
    std::optional<Clock::time_point> done_;
    std::optional<Clock::time_point> heardAgain_;
    Rounds rounds_;
    std::optional<DeadEnd> deadEnd_;
    std::uint64_t bytes_ = 0;
    bool isConnected_ = false;
    bool isTransferring_ = false;  // a file was asked for last
    bool isDone_ = false;
    bool isSent_ = false;       // -z: a frame with a wrong prefix
    bool isRefused_ = false;    // -g
    bool isConfirmed_ = false;  // -u
};

}  // namespace rig::campaign
