#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "rig/base/Descriptor.h"
#include "rig/proxy/FrameFollower.h"
#include "rig/proxy/ProxyLog.h"

namespace rig::proxy {

/// One of the two sockets of a link, and what has come from it. Of that at most one piece is kept: the next
/// is read once the other side has taken all of it, so that a peer which does not read holds up its partner
/// and not the proxy's memory.
class Side {
 public:
    /// @param socket  does not block
    Side(Party party, Descriptor socket);

    enum class Taken { Nothing, Piece, End, Error };

    /// Reads the next piece, which must not be done while there is one. Urgent data comes as a piece of its
    /// own.
    Taken TakePiece();

    /// Has these bytes passed as if they had been read: there must be no piece.
    void Put(const std::string& bytes);

    /// The piece is not passed.
    void DropPiece() { start_ = end_; }

    /// Sends as much of this side's piece to the other as it takes.
    void PassPieceTo(Side& other);

    /// Passes the end of this side on, once, when all that came before it is passed.
    void PassEndTo(Side& other);

    /// Closes the socket so that the peer sees a reset.
    void Reset();

    /// Notes that the connection with this side has failed, by an error of the system.
    void Fail(int error);

    /// @return the error that the system keeps for the socket; 0 if there is none
    int PendingError() const;

    bool HasPiece() const { return start_ < end_; }
    const char* Piece() const { return piece_.data() + start_; }
    std::size_t PieceBytes() const { return end_ - start_; }

    Party party;
    Descriptor socket;
    FrameFollower follower;
    bool hasEnded = false;     // it sends no more
    bool isEndPassed = false;  // and the other side has been told
    bool isFailed = false;     // it can no longer be written to; what it sent before may wait to be read
    bool isHungUp = false;     // both directions of its socket are shut: nothing about it can change
    std::string error;         // of a failed side, in words

 private:
    std::vector<char> piece_;
    std::size_t start_ = 0;
    std::size_t end_ = 0;
    bool isUrgent_ = false;
};

}  // namespace rig::proxy
