#include "rig/proxy/Link.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace rig::proxy {

Link::Link(unsigned int number, Descriptor dvr, const Address& harness, ProxyLog& log)
    : number_(number),
      log_(log),
      dvr_(Party::Dvr, std::move(dvr)),
      harness_(Party::Harness,
               Descriptor(socket(harness.bytes.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))) {
    log_.Connected(number_, PeerAddress(dvr_.socket).Words());
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
    return {WaitFor(dvr_, harness_), WaitFor(harness_, dvr_)};
}

bool Link::MayRead(const Side& side, const Side& other) const {
    return !isConnecting_ && !side.hasEnded && !side.HasPiece() && !other.isFailed;
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
            const auto log = [&](const FollowedFrame& frame) { log_.Frame(number_, side.party, frame); };
            const std::string_view piece(side.Piece(), side.PieceBytes());
            Pass(side, other);
            side.follower.Follow(piece.data(), piece.size(), log);
            return;
        }
        case Side::Taken::End:
            if (!side.isFailed) {
                NoteEnd(side);
                Pass(side, other);
                return;
            }
            break;
        case Side::Taken::Error:
            break;
    }
    EndByReset(side, other);
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
    other.Reset();
    Finish();
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

void Link::Finish() {
    dvr_.socket.Close();
    harness_.socket.Close();
    hasEnded_ = true;
}

}  // namespace rig::proxy
