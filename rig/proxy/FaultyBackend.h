#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "rig/fault/Plan.h"
#include "rig/proxy/FrameFollower.h"
#include "rig/proxy/ProxyLog.h"

namespace rig::proxy {

using Clock = std::chrono::steady_clock;

/// What one connection of the DVR sees of the harness where a plan has faults: takes the harness's bytes, and
/// says what is to be done to the DVR instead. Has no sockets, and no clock of its own.
class FaultyBackend {
 public:
    /// @param plan,log  must outlive this object
    FaultyBackend(fault::Plan& plan, unsigned int connection, ProxyLog& log)
        : plan_(plan), connection_(connection), log_(log) {}

    /// The DVR has connected. @return whether a fault acts on that: then the harness is not to know of it
    bool TakeCall();

    /// Takes what the harness has sent.
    void Add(std::string_view bytes) { held_ += bytes; }

    /// @return what is left of the harness's bytes, where no more will come
    std::string TakeRest() { return std::exchange(held_, {}); }

    /// @return the next thing to do to the DVR: Send, HalfClose, Close, Reset or Refuse; nothing if there is
    /// none yet
    std::optional<fault::Act> Next(Clock::time_point now);

    /// @return when Next may have something; nothing if that depends on bytes alone
    std::optional<Clock::time_point> Due() const;

    /// @return whether more of the harness's bytes can wait: what it has sent is not all passed on
    bool IsBusy() const { return played_.has_value(); }

    /// @return whether messages of the DVR may be kept from the harness
    bool MayTake() const { return act_ && act_->kind == fault::Act::Kind::TakeAnswers; }

    /// A message of the DVR has come, and goes on to the harness.
    void Note(const std::string& text) { plan_.Note(text); }

    /// A message of the DVR has come while MayTake. @return whether the harness must not see it
    bool Takes(const FollowedFrame& frame);

    /// @return whether the DVR may now end the connection before DONE, as a fault that it need not tolerate
    /// has acted
    bool MayHangUp() const { return isWronged_ && !isDone_; }

 private:
    std::optional<fault::Act> NextOfHarness();
    void Begin(fault::Plan::Played played, const std::string& message);
    bool IsOver(const fault::Act& act, Clock::time_point now);
    void End();

    fault::Plan& plan_;
    unsigned int connection_;
    ProxyLog& log_;
    std::string held_;  // of the harness, not yet dealt with
    std::optional<fault::Plan::Played> played_;
    std::size_t at_ = 0;             // in its script
    std::optional<fault::Act> act_;  // that takes time
    Clock::time_point until_;        // when it is over
    std::size_t taken_ = 0;          // answers
    bool leavesOutNext_ = false;
    bool isBlind_ = false;  // the harness sends something else than messages of a bearable length
    bool isWronged_ = false;
    bool isDone_ = false;
};

}  // namespace rig::proxy
