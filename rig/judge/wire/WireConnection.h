#pragma once

#include <deque>
#include <optional>
#include <string>

#include "rig/judge/wire/PlayedFault.h"

namespace rig::judge {

/// Follows one connection of the DVR through the proxy's log.
class WireConnection {
 public:
    /// @param dialect   of the run, as far as its log tells
    /// @param patience  seconds after DONE, after which the DVR ought to have ended the connection
    /// @param facts     gets what is found; must outlive this
    WireConnection(const WireEvent& begin, int dialect, double patience, WireFacts& facts);

    /// Takes the next event of the connection; the line is kept in the facts.
    void Take(const WireEvent& event, const Place& place);

    /// @return whether neither side has ended it
    bool IsOpen() const { return !hasEnded_; }

    /// @return whether it is open, and the export not done
    bool IsServed() const { return IsOpen() && !done_; }

    /// @return whether no more events can come
    bool IsOver() const { return isClosed_ && !playing_; }

    /// The log ends, or says no more of it.
    void End(std::int64_t time);

 private:
    struct Asked {
        std::string name;
        std::optional<std::string> reid;
        std::optional<std::string> file;
        std::int64_t time;  // when it went out to the DVR
    };

    void TakeRequest(const WireEvent& frame, const Place& place);
    void TakeMessage(const WireEvent& frame, const Place& place);
    void TakeAnswer(const WireEvent& frame, const Place& place);
    void TakeFault(const WireEvent& event, const Place& place);
    void TakeSent(const WireEvent& event);
    void TakeEnd(const WireEvent& event, const Place& place);
    void CountEnd(const WireEvent& event, const Place& place);
    void EndFault(bool isOver, std::int64_t time);
    void SetDone(std::int64_t time);
    bool LeftOpen(std::int64_t time) const;

    std::int64_t begin_;
    int dialect_;
    double patience_;
    WireFacts& facts_;
    KeptLine lastLine_;
    std::deque<Asked> pending_;  // requests that wait for their answers
    std::deque<Asked> loose_;    // answers that none waited for, by their requests
    std::optional<PlayedFault> playing_;
    bool isWronged_ = false;  // by a fault that is not legal
    bool isWrongedAtDone_ = false;
    std::optional<std::int64_t> done_;  // when the DVR got DONE
    bool hasEnded_ = false;             // one side
    bool isClosed_ = false;             // both
};

}  // namespace rig::judge
