#include "rig/judge/wire/WireConnection.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Holds.h"
#include "rig/base/Printable.h"
#include "rig/protocol/Catalogue.h"

namespace rig::judge {
namespace {

using Kind = WireEvent::Kind;
using protocol::Sender;

constexpr std::size_t kMostAwaited = 1000;  // memory must not grow with the log

std::uint64_t ShortestPrefix(std::uint64_t length) {
    std::uint64_t bytes = 1;
    for (; length > 0x7f; length >>= 7) {
        ++bytes;
    }
    return bytes;
}

bool MayBeSame(const std::optional<std::string>& one, const std::optional<std::string>& other) {
    return !one || !other || *one == *other;
}

/// @return the request that a DVR's message answers where all is well; null if it is a report, or OK
const protocol::MessageKind* RequestFor(const std::string& message, int dialect) {
    const auto& all = protocol::Catalogue();
    const auto found = std::find_if(all.begin(), all.end(), [&](const protocol::MessageKind& kind) {
        return kind.dialect == dialect && kind.sender == Sender::Harness && !kind.answers.empty() &&
               message == kind.answers.front();
    });
    return found == all.end() ? nullptr : &*found;
}

bool Answers(const std::string& message, const std::string& request, int dialect) {
    const auto* const kind = protocol::Find(dialect, Sender::Harness, request);
    return kind != nullptr &&
           std::find(kind->answers.begin(), kind->answers.end(), message) != kind->answers.end();
}

bool IsOfDvr(const std::string& message) {
    return protocol::Find(1, Sender::Dvr, message) != nullptr ||
           protocol::Find(2, Sender::Dvr, message) != nullptr;
}

template <typename Item>
void AddTo(std::deque<Item>& items, Item item) {
    items.push_back(std::move(item));
    if (items.size() > kMostAwaited) {
        items.pop_front();
    }
}

}  // namespace

WireConnection::WireConnection(const WireEvent& begin, int dialect, double patience, WireFacts& facts)
    : begin_(begin.time), dialect_(dialect), patience_(patience), facts_(facts) {}

void WireConnection::Take(const WireEvent& event, const Place& place) {
    facts_.lines->Keep(place, lastLine_);
    switch (event.kind) {
        case Kind::Frame:
            event.isFromDvr ? TakeMessage(event, place) : TakeRequest(event, place);
            break;
        case Kind::Fault:
            TakeFault(event, place);
            break;
        case Kind::Sent:
            TakeSent(event);
            break;
        case Kind::KeptOpen:
            if (playing_) {
                playing_->TakeKeptOpen(place);
            }
            break;
        case Kind::FaultEnd:
            EndFault(true, event.time);
            break;
        case Kind::HalfClose:
        case Kind::Close:
        case Kind::Reset:
            TakeEnd(event, place);
            break;
        default:
            break;
    }
}

void WireConnection::TakeRequest(const WireEvent& frame, const Place& place) {
    dialect_ = protocol::OnlyDialectOf(frame.message).value_or(dialect_);
    if (frame.message == "DONE") {
        SetDone(frame.time);
    }
    const auto* const kind = protocol::Find(dialect_, Sender::Harness, frame.message);
    if (kind == nullptr || kind->answers.empty()) {
        return;
    }
    const auto early = std::find_if(loose_.begin(), loose_.end(), [&](const Asked& one) {
        return one.name == frame.message && MayBeSame(one.reid, frame.reid) &&
               MayBeSame(one.file, frame.file);
    });
    if (early != loose_.end() && !isWronged_) {
        facts_.early.Add(place, fmt::format("{} came {:.1f} ms before {}", kind->answers.front(),
                                            static_cast<double>(frame.time - early->time) / 1e3, kind->name));
        loose_.erase(early);
    }
    AddTo(pending_, Asked{frame.message, frame.reid, frame.file, frame.time});
}

void WireConnection::TakeMessage(const WireEvent& frame, const Place& place) {
    const std::string name = frame.message.empty() ? "a message without req" : Printable(frame.message);
    const std::uint64_t enough = ShortestPrefix(frame.textBytes);
    if (frame.prefixBytes > enough) {
        facts_.longPrefixes.Add(
            place, fmt::format("{}: {} bytes where {} would do", name, frame.prefixBytes, enough));
    }
    if (frame.isTaken) {
        if (playing_) {
            playing_->TakeAnswer(frame, place);
        }
        return;
    }
    if (IsOfDvr(frame.message) || frame.message.empty()) {
        ++facts_.passed[frame.message];
    }
    if (frame.message == "OK") {
        done_.reset();
        pending_.clear();
        loose_.clear();
    } else if (done_) {
        (isWronged_ ? facts_.afterFaultAndDone : facts_.afterDone).Add(place, name);
    }
    TakeAnswer(frame, place);
}

void WireConnection::TakeAnswer(const WireEvent& frame, const Place& place) {
    const auto isAnswered = [&](const Asked& one) {
        return Answers(frame.message, one.name, dialect_) && MayBeSame(one.reid, frame.reid) &&
               MayBeSame(one.file, frame.file);
    };
    const bool mayBeNews = frame.message == "XFER_IN_PROGRESS";
    const auto answered = std::find_if(pending_.begin(), pending_.end(), isAnswered);
    if (mayBeNews && std::count_if(pending_.begin(), pending_.end(), isAnswered) < 2) {
        return;  // of a transfer that was asked for once
    }
    if (answered != pending_.end()) {
        facts_.reactions[answered->name].Add(frame.time - answered->time, place);
        pending_.erase(answered);
    } else if (const auto* const request = RequestFor(frame.message, dialect_)) {
        AddTo(loose_, Asked{request->name, frame.reid, frame.file, frame.time});
    }
}

void WireConnection::TakeFault(const WireEvent& event, const Place& place) {
    EndFault(false, event.time);
    playing_.emplace(event, place, dialect_, facts_);
    facts_.acted.Add(
        place, Printable(fmt::format("{} at {}, {:.3f} s after the DVR's call", event.Named(), event.message,
                                     static_cast<double>(event.time - begin_) / 1e6)));
    isWronged_ = isWronged_ || playing_->IsWrong();
    facts_.isDisturbed = facts_.isDisturbed || playing_->NeedsOnlySurvival();
    if (event.message == "DONE") {
        done_.reset();
        isWrongedAtDone_ = playing_->IsWrong();
    }
}

/// What the harness has sent goes out to the DVR only now.
void WireConnection::TakeSent(const WireEvent& event) {
    if (!playing_) {
        return;
    }
    playing_->TakeSent(event);
    if (!pending_.empty() && pending_.back().name == playing_->At()) {
        pending_.back().time = event.time;
    }
    if (rig::Holds(event.messages, "DONE")) {
        SetDone(event.time);
    }
}

void WireConnection::EndFault(bool isOver, std::int64_t time) {
    if (!playing_) {
        return;
    }
    playing_->End(isOver);
    if (isOver && playing_->At() == "DONE" && !done_ && !playing_->IsWrong()) {
        SetDone(time);
    }
    playing_.reset();
}

void WireConnection::SetDone(std::int64_t time) {
    done_ = time;
    facts_.doneTime = isWrongedAtDone_ ? std::nullopt : std::optional(time);
}

void WireConnection::TakeEnd(const WireEvent& event, const Place& place) {
    if (event.by == "dvr" && playing_) {
        playing_->TakeHangUp(event, place);
    }
    if (!hasEnded_) {
        CountEnd(event, place);
    }
    hasEnded_ = true;
    isClosed_ = isClosed_ || event.kind != Kind::HalfClose;
    if (isClosed_ && event.by != "proxy") {
        EndFault(false, event.time);
    }
}

void WireConnection::CountEnd(const WireEvent& event, const Place& place) {
    facts_.isDisturbed = facts_.isDisturbed || (isWronged_ && !done_ && (playing_ || event.by == "dvr"));
    if (event.by == "dvr") {
        ++facts_.endedByDvr;
        if (!done_ && !isWronged_ && !playing_) {
            facts_.beforeDone.Add(place);
        }
    } else if (playing_) {
        ++facts_.endedByFault;
    } else {
        ++(event.by == "harness" ? facts_.endedByHarness : facts_.endedByProxy);
        if (LeftOpen(event.time)) {
            facts_.leftOpen.Add(place,
                                fmt::format("for {:.1f} s", static_cast<double>(event.time - *done_) / 1e6));
        }
    }
}

bool WireConnection::LeftOpen(std::int64_t time) const {
    return done_ && static_cast<double>(time - *done_) / 1e6 >= patience_;
}

void WireConnection::End(std::int64_t time) {
    EndFault(false, time);
    if (!hasEnded_ && LeftOpen(time)) {
        facts_.leftOpen.Add(lastLine_.Proof(),
                            fmt::format("for {:.1f} s", static_cast<double>(time - *done_) / 1e6));
    } else if (!hasEnded_) {
        facts_.stillOpen.Add(lastLine_.Proof());
    }
}

}  // namespace rig::judge
