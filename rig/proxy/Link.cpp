#include "rig/proxy/Link.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace rig::proxy {
namespace {

/// @return a socket that calls from the DVR's own address and port, if this network has them and they are
///         free: the harness logs them
Descriptor SocketTo(const Address& harness, const Address& dvr) {
    Descriptor caller(socket(harness.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (harness.IsLoopback()) {
        static_cast<void>(bind(caller.Number(), dvr.Get(), dvr.size));
    }
    return caller;
}

}  // namespace

Link::Link(unsigned int number, Descriptor dvr, const Address& harness, fault::Plan& plan, ProxyLog& log)
    : number_(number), log_(log), dvr_(Party::Dvr, std::move(dvr)), harness_(Party::Harness, Descriptor()) {
    log_.Connected(number_, PeerAddress(dvr_.socket).Words());
    if (!plan.IsEmpty()) {
        backend_.emplace(plan, number_, log_);
        isLone_ = backend_->TakeCall();
    }
    if (isLone_) {
        isConnecting_ = false;
        Continue();
    } else {
        Connect(harness);
    }
}

void Link::Connect(const Address& harness) {
    harness_ = Side(Party::Harness, SocketTo(harness, PeerAddress(dvr_.socket)));
    if (!harness_.socket.IsOpen()) {
        FinishConnecting(EMFILE);
        return;
    }
    const int started = connect(harness_.socket.Number(), harness.Get(), harness.size);
    if (started == 0 || errno != EINPROGRESS) {
        FinishConnecting(started == 0 ? 0 : errno);
    }
}

Link::Waits Link::WaitsFor() const {
    if (hasEnded_) {
        return {{-1, 0, 0}, {-1, 0, 0}};
    }
    return {WaitFor(dvr_, harness_), WaitFor(harness_, dvr_)};
}

bool Link::MayRead(const Side& side, const Side& other) const {
    const bool waits = backend_ && side.party == Party::Harness && backend_->IsBusy();
    return !isConnecting_ && !side.hasEnded && !side.HasPiece() && !other.isFailed && !waits;
}

/// Even without events the descriptor tells of a reset.
pollfd Link::WaitFor(const Side& side, const Side& other) const {
    if (isConnecting_) {
        return {side.socket.Number(), static_cast<short>(side.party == Party::Harness ? POLLOUT : 0), 0};
    }
    const bool reads = MayRead(side, other);
    const bool writes = other.HasPiece() && !side.isFailed;
    if (!reads && !writes && side.isHungUp) {
        return {-1, 0, 0};
    }
    return {side.socket.Number(), static_cast<short>((reads ? POLLIN : 0) | (writes ? POLLOUT : 0)), 0};
}

void Link::React(const Waits& ready) {
    if (isConnecting_ && ready.harness.revents != 0) {
        FinishConnecting(harness_.PendingError());
    } else if (!isConnecting_) {
        ReactTo(harness_, dvr_, ready.harness.revents);
    }
    if (!hasEnded_) {
        ReactTo(dvr_, harness_, ready.dvr.revents);
    }
}

/// The harness has taken the connection if the error is 0, or tells of what came after: what it sent before
/// may wait to be read.
void Link::FinishConnecting(int error) {
    isConnecting_ = false;
    if (error == ECONNRESET || error == EPIPE) {
        harness_.Fail(error);
    } else if (error != 0) {
        log_.Refused(number_, std::strerror(error));
        dvr_.Reset();
        Finish();
    }
}

void Link::ReactTo(Side& side, Side& other, short events) {
    if ((events & POLLOUT) != 0) {
        Pass(other, side);
        Continue();
    }
    if (hasEnded_ || (events & (POLLIN | POLLERR | POLLHUP)) == 0) {
        return;
    }
    if (MayRead(side, other)) {
        Take(side, other);
    } else if ((events & POLLERR) != 0 || side.isFailed) {
        side.Fail(side.PendingError());
        EndByReset(side, other);
    } else if ((events & POLLHUP) != 0) {
        side.isHungUp = true;
    }
}

/// A failed side ends once all that it had sent is read.
void Link::Take(Side& side, Side& other) {
    switch (side.TakePiece()) {
        case Side::Taken::Nothing:
            return;
        case Side::Taken::Piece: {
            if (backend_) {
                side.party == Party::Harness ? TakeFromHarness() : TakeFromDvr();
                return;
            }
            const auto log = [&](const FollowedFrame& frame, const std::string&) { NoteFrame(side, frame); };
            const std::string_view piece(side.Piece(), side.PieceBytes());
            Pass(side, other);
            side.follower.Follow(piece.data(), piece.size(), log);
            return;
        }
        case Side::Taken::End:
            if (!side.isFailed) {
                NoteEnd(side);
                if (MayDvrEnd(side)) {
                    log_.Closed(number_, side.party);
                    EndByFault();
                    return;
                }
                if (backend_ && side.party == Party::Harness) {
                    side.Put(backend_->TakeRest());
                }
                Pass(side, other);
                return;
            }
            break;
        case Side::Taken::Error:
            break;
    }
    EndByReset(side, other);
}

bool Link::MayDvrEnd(const Side& side) const {
    return side.party == Party::Dvr && (isLone_ || (backend_ && backend_->MayHangUp()));
}

void Link::NoteFrame(const Side& side, const FollowedFrame& frame) {
    log_.Frame(number_, side.party, frame);
    isDone_ = isDone_ || (side.party == Party::Harness && frame.message == "DONE");
}

void Link::TakeFromHarness() {
    const std::string piece(harness_.Piece(), harness_.PieceBytes());
    harness_.DropPiece();
    harness_.follower.Follow(piece.data(), piece.size(), [&](const FollowedFrame& frame, const std::string&) {
        NoteFrame(harness_, frame);
    });
    backend_->Add(piece);
    Continue();
}

/// A message that may be kept from the harness waits until it is whole.
void Link::TakeFromDvr() {
    std::string passed;
    const auto take = [&](const FollowedFrame& frame, const std::string& text) {
        if (mayTake_ && backend_->Takes(frame)) {
            kept_.clear();
        } else {
            log_.Frame(number_, Party::Dvr, frame);
            backend_->Note(text);
        }
        passed += std::exchange(kept_, {});
    };
    for (std::size_t at = 0; at < dvr_.PieceBytes(); ++at) {
        const char byte = dvr_.Piece()[at];
        mayTake_ =
            dvr_.follower.Unfinished() ? mayTake_ && kept_.size() < kMostKeptBytes : backend_->MayTake();
        kept_ += byte;
        dvr_.follower.Follow(&byte, 1, take);
        if (!mayTake_) {
            passed += std::exchange(kept_, {});
        }
    }
    dvr_.DropPiece();
    if (!isLone_) {
        dvr_.Put(passed);
        Pass(dvr_, harness_);
    }
    Continue();
}

void Link::Continue() {
    while (backend_ && !hasEnded_ && !isConnecting_ && !harness_.HasPiece()) {
        const std::optional<fault::Act> act = backend_->Next(Clock::now());
        if (!act) {
            break;
        }
        Do(*act);
    }
    if (isCut_ && !hasEnded_ && !backend_->IsBusy()) {
        EndByFault();
    }
}

void Link::Do(const fault::Act& act) {
    using Kind = fault::Act::Kind;
    switch (act.kind) {
        case Kind::Send:
            if (!isCut_) {
                harness_.Put(act.bytes);
                Pass(harness_, dvr_);
            }
            break;
        case Kind::HalfClose:
            shutdown(dvr_.socket.Number(), SHUT_WR);
            break;
        case Kind::Close:
            log_.Closed(number_, Party::Proxy);
            dvr_.socket.Close();
            isCut_ = true;
            break;
        case Kind::Reset:
            log_.Reset(number_, Party::Proxy, "as the fault says");
            dvr_.Reset();
            isCut_ = true;
            break;
        case Kind::Refuse:
            refusal_ = act.time;
            break;
        default:
            break;
    }
}

std::optional<Clock::time_point> Link::Due() const {
    return backend_ && !hasEnded_ ? backend_->Due() : std::nullopt;
}

/// Passes what the side has sent, and its end if it has come.
void Link::Pass(Side& side, Side& other) {
    side.PassPieceTo(other);
    side.PassEndTo(other);
    if (side.isEndPassed && other.isEndPassed) {
        EndInOrder();
    }
}

void Link::NoteEnd(Side& side) {
    side.hasEnded = true;
    NotePartial(side);
    if (!first_) {
        first_ = side.party;
        log_.HalfClosed(number_, side.party);
    }
}

void Link::NotePartial(const Side& side) {
    if (const std::optional<FollowedFrame> frame = side.follower.Unfinished()) {
        log_.Partial(number_, side.party, *frame);
    }
}

void Link::EndInOrder() {
    log_.Closed(number_, *first_);
    Finish();
}

void Link::EndByReset(Side& failed, Side& other) {
    for (const Side* side : {&failed, &other}) {
        if (!side->hasEnded) {
            NotePartial(*side);
        }
    }
    log_.Reset(number_, failed.party, failed.error);
    if (MayDvrEnd(failed)) {
        EndByFault();
        return;
    }
    other.Reset();
    Finish();
}

void Link::EndWithHarness() {
    if (!hasEnded_ && harness_.isEndPassed) {
        EndInOrder();
    }
}

void Link::EndByProxy() {
    if (hasEnded_) {
        return;
    }
    for (const Side* side : {&dvr_, &harness_}) {
        if (!side->hasEnded) {
            NotePartial(*side);
        }
    }
    log_.Closed(number_, Party::Proxy);
    Finish();
}

/// The harness would take the end of its connection for the DVR's doing, so it keeps its connection.
void Link::EndByFault() {
    dvr_.socket.Close();
    hasEnded_ = true;
    hasEndedByFault_ = !isLone_;
}

void Link::Finish() {
    dvr_.socket.Close();
    harness_.socket.Close();
    hasEnded_ = true;
}

}  // namespace rig::proxy
