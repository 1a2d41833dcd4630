#include "rig/proxy/FaultyBackend.h"

#include <utility>

#include "rig/base/Holds.h"

namespace rig::proxy {

using fault::Act;

namespace {

struct CutFrame {
    std::string bytes;
    std::string text;
    std::string message;
};

/// @return the first frame in the bytes, which it removes from them; nothing if it is not whole. Sets isBlind
/// if there can be none.
std::optional<CutFrame> CutFrom(std::string& bytes, bool& isBlind) {
    FrameFollower follower;
    std::size_t length = 0;
    std::optional<CutFrame> cut;
    while (!cut && length < bytes.size()) {
        follower.Follow(&bytes[length++], 1, [&](const FollowedFrame& frame, const std::string& text) {
            cut = CutFrame{bytes.substr(0, length), text, frame.message};
        });
    }
    if (cut) {
        bytes.erase(0, length);
    } else if (const auto begun = follower.Unfinished()) {
        isBlind = begun->announced.value_or(0) > kMostKeptBytes || begun->textBytes > kMostKeptBytes;
    }
    return cut;
}

}  // namespace

bool FaultyBackend::TakeCall() {
    std::optional<fault::Plan::Played> played = plan_.ForCall();
    if (played) {
        Begin(std::move(*played), fault::kCall);
    }
    return IsBusy();
}

std::optional<Act> FaultyBackend::Next(Clock::time_point now) {
    for (;;) {
        if (act_ && !IsOver(*act_, now)) {
            return std::nullopt;
        }
        act_.reset();
        if (!played_) {
            std::optional<Act> act = NextOfHarness();
            if (act || !played_) {
                return act;
            }
        }
        if (at_ == played_->script.size()) {
            End();
            continue;
        }
        Act act = played_->script[at_++];
        switch (act.kind) {
            case Act::Kind::Wait:
            case Act::Kind::TakeAnswers:
            case Act::Kind::AwaitHangUp:
                until_ = now + act.time;
                taken_ = 0;
                act_ = std::move(act);
                break;
            case Act::Kind::LeaveOutNext:
                leavesOutNext_ = true;
                break;
            case Act::Kind::Send:
                log_.Sent(connection_, played_->fault.name, act.bytes);
                return act;
            default:
                return act;
        }
    }
}

/// @return a message of the harness on its way to the DVR; nothing if there is none, or if a fault takes its
/// place
std::optional<Act> FaultyBackend::NextOfHarness() {
    while (!held_.empty() && !isBlind_) {
        std::optional<CutFrame> frame = CutFrom(held_, isBlind_);
        if (!frame) {
            break;
        }
        isDone_ = isDone_ || frame->message == "DONE";
        if (std::exchange(leavesOutNext_, false)) {
            continue;
        }
        if (std::optional<fault::Plan::Played> played = plan_.For(frame->text)) {
            Begin(std::move(*played), frame->message);
            return std::nullopt;
        }
        return Act{Act::Kind::Send, std::move(frame->bytes)};
    }
    if (isBlind_ && !held_.empty()) {
        return Act{Act::Kind::Send, std::exchange(held_, {})};
    }
    return std::nullopt;
}

void FaultyBackend::Begin(fault::Plan::Played played, const std::string& message) {
    log_.FaultActs(connection_, played.fault.name, played.value, message);
    isWronged_ = isWronged_ || played.fault.duty != fault::Duty::GoesOn;
    at_ = 0;
    played_.emplace(std::move(played));
}

void FaultyBackend::End() {
    log_.FaultEnds(connection_, played_->fault.name);
    played_.reset();
}

bool FaultyBackend::IsOver(const Act& act, Clock::time_point now) {
    const bool isLate = now >= until_;
    if (isLate && act.kind == Act::Kind::AwaitHangUp) {
        log_.KeptOpen(connection_, played_->fault.name);
    }
    return isLate || (act.kind == Act::Kind::TakeAnswers && taken_ >= act.answers);
}

std::optional<Clock::time_point> FaultyBackend::Due() const {
    return act_ ? std::optional<Clock::time_point>(until_) : std::nullopt;
}

bool FaultyBackend::Takes(const FollowedFrame& frame) {
    if (!MayTake() || taken_ >= act_->answers || !(act_->only.empty() || Holds(act_->only, frame.message))) {
        return false;
    }
    ++taken_;
    log_.Taken(connection_, frame);
    return true;
}

}  // namespace rig::proxy
