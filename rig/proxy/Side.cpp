#include "rig/proxy/Side.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace rig::proxy {
namespace {

constexpr std::size_t kMostPieceBytes = std::size_t{64} * 1024;

bool IsTransient(int error) {
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

/// The system has other names for it if the error was told before, or if the peer had closed its end.
bool IsReset(int error) {
    return error == 0 || error == ECONNRESET || error == EPIPE || error == ENOTCONN;
}

void TurnOn(const Descriptor& socket, int level, int option) {
    const int on = 1;
    setsockopt(socket.Number(), level, option, &on, sizeof on);
}

}  // namespace

Side::Side(Party ownParty, Descriptor ownSocket)
    : party(ownParty), socket(std::move(ownSocket)), piece_(kMostPieceBytes) {
    TurnOn(socket, IPPROTO_TCP, TCP_NODELAY);
    TurnOn(socket, SOL_SOCKET, SO_OOBINLINE);  // otherwise the urgent byte would be left out
}

Side::Taken Side::TakePiece() {
    piece_.resize(kMostPieceBytes);
    isUrgent_ = sockatmark(socket.Number()) == 1;
    const ssize_t count = recv(socket.Number(), piece_.data(), isUrgent_ ? 1 : piece_.size(), 0);
    if (count > 0) {
        start_ = 0;
        end_ = static_cast<std::size_t>(count);
        return Taken::Piece;
    }
    if (count == 0) {
        return Taken::End;
    }
    if (IsTransient(errno)) {
        return Taken::Nothing;
    }
    Fail(errno);
    return Taken::Error;
}

void Side::Put(const std::string& bytes) {
    piece_.assign(bytes.begin(), bytes.end());
    start_ = 0;
    end_ = bytes.size();
    isUrgent_ = false;
}

void Side::PassPieceTo(Side& other) {
    while (HasPiece()) {
        const ssize_t count =
            send(other.socket.Number(), Piece(), PieceBytes(), MSG_NOSIGNAL | (isUrgent_ ? MSG_OOB : 0));
        if (count >= 0) {
            start_ += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            if (!IsTransient(errno)) {
                other.Fail(errno);
                start_ = end_;
            }
            return;
        }
    }
}

void Side::PassEndTo(Side& other) {
    if (hasEnded && !HasPiece() && !isEndPassed) {
        isEndPassed = shutdown(other.socket.Number(), SHUT_WR) == 0;
        if (!isEndPassed) {
            other.Fail(errno);
        }
    }
}

void Side::Reset() {
    const linger atOnce = {1, 0};
    setsockopt(socket.Number(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    socket.Close();
}

void Side::Fail(int number) {
    isFailed = true;
    if (error.empty()) {
        error = std::strerror(IsReset(number) ? ECONNRESET : number);
    }
}

int Side::PendingError() const {
    int number = 0;
    socklen_t size = sizeof number;
    getsockopt(socket.Number(), SOL_SOCKET, SO_ERROR, &number, &size);
    return number;
}

}  // namespace rig::proxy
