#include "rig/dvr/wire/Connection.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;
constexpr Milliseconds kRetryPause(50);
constexpr Milliseconds kShortestAttempt(1000);
constexpr std::chrono::hours kNoEnd(24 * 365);
constexpr Milliseconds kImpatience(1000);  // of those that have too little

/// A client that tries a local port where nobody listens may be given that very port, and connect to itself.
bool IsConnectedToItself(int socket) {
    sockaddr_storage own{};
    sockaddr_storage peer{};
    socklen_t ownSize = sizeof own;
    socklen_t peerSize = sizeof peer;
    return getsockname(socket, reinterpret_cast<sockaddr*>(&own), &ownSize) == 0 &&
           getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &peerSize) == 0 && ownSize == peerSize &&
           std::memcmp(&own, &peer, ownSize) == 0;
}

/// One attempt at one address. @return the connected socket, or none with errno set
Descriptor TryConnect(const addrinfo& address, Clock::time_point deadline, int stop) {
    Descriptor attempt(
        socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address.ai_protocol));
    if (!attempt.IsOpen()) {
        return Descriptor();
    }
    int error = 0;
    if (connect(attempt.Number(), address.ai_addr, address.ai_addrlen) == -1) {
        error = errno;
        if (error == EINPROGRESS) {
            error = ETIMEDOUT;
            socklen_t size = sizeof error;
            if (WaitFor(attempt.Number(), POLLOUT, deadline, stop)) {
                getsockopt(attempt.Number(), SOL_SOCKET, SO_ERROR, &error, &size);
            }
        }
    }
    if (error == 0 && IsConnectedToItself(attempt.Number())) {
        error = ECONNREFUSED;
    }
    errno = error;
    return error == 0 ? std::move(attempt) : Descriptor();
}

}  // namespace

Endpoint::Endpoint(const std::string& host, int port) : name_(host + ":" + std::to_string(port)) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    const int error = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &addresses_);
    if (error != 0) {
        throw Failure(ExitStatus::Unusable,
                      fmt::format("--host: expected a host that can be resolved, found {}: {}", Quoted(host),
                                  gai_strerror(error)));
    }
}

Endpoint::~Endpoint() {
    freeaddrinfo(addresses_);
}

Connection Connection::Open(const Endpoint& endpoint, Milliseconds wait, int stop) {
    const auto start = Clock::now();
    const auto deadline = start + wait;
    for (;;) {
        int error = 0;
        for (const addrinfo* address = endpoint.Addresses(); address != nullptr; address = address->ai_next) {
            Descriptor connected = TryConnect(*address, std::max(deadline, start + kShortestAttempt), stop);
            if (connected.IsOpen()) {
                Connection connection(std::move(connected));
                connection.HeedStop(stop);
                return connection;
            }
            error = errno;
        }
        if (Clock::now() >= deadline) {
            throw Failure(ExitStatus::NothingCame,
                          fmt::format("expected the harness to listen at {} within {} ms, found: {}",
                                      Printable(endpoint.Name()), wait.count(), std::strerror(error)));
        }
        Pause(kRetryPause, stop);  // nothing tells us when someone starts to listen
    }
}

Connection::Connection(Descriptor socket) : socket_(std::move(socket)), chunk_(kChunkBytes) {
    const int flags = fcntl(socket_.Number(), F_GETFL);
    if (flags == -1 || fcntl(socket_.Number(), F_SETFL, flags | O_NONBLOCK) == -1) {
        ThrowSystemError("fcntl");
    }
    // Send an answer at once, even while an earlier one is unacknowledged. A local socket has no such option.
    const int on = 1;
    setsockopt(socket_.Number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void Connection::SendInPieces(std::size_t bytes, Milliseconds pause) {
    pieceBytes_ = bytes;
    pause_ = pause;
}

void Connection::Send(const std::string& bytes, Milliseconds patience) {
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = start + std::min(pieceBytes_, bytes.size() - start);
        SendPart(bytes, start, end, patience);
        if (end < bytes.size()) {
            Awaits(0, Clock::now() + pause_);  // or until the connection has failed
        }
        start = end;
    }
}

void Connection::SendPart(const std::string& bytes, std::size_t start, std::size_t end,
                          Milliseconds patience) {
    std::size_t sent = start;
    while (sent < end) {
        const ssize_t count = send(socket_.Number(), bytes.data() + sent, end - sent, MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno == EPIPE || errno == ECONNRESET) {
            ended_ = reset_ = true;
            throw Breach(
                fmt::format("the end of the connection after {} of {} bytes were sent", sent, bytes.size()));
        } else if (errno == EAGAIN) {
            if (!Awaits(POLLOUT, Clock::now() + patience)) {
                throw Failure(
                    ExitStatus::NothingCame,
                    fmt::format("expected the harness to take {} bytes of a message, found that it took {} "
                                "and then none for {} ms",
                                bytes.size(), sent, patience.count()));
            }
        } else if (errno != EINTR) {
            ThrowSystemError("send");
        }
    }
}

void Connection::Close() {
    socket_ = Descriptor();
}

void Connection::Reset() {
    const linger atOnce{1, 0};
    setsockopt(socket_.Number(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    Close();
}

void Connection::Weaken(Flaws& flaws) {
    flaws_ = &flaws;
    decoder_.Weaken(flaws);
}

bool Connection::Shows(Flaw flaw, std::size_t measure) const {
    return flaws_ != nullptr && flaws_->Show(flaw, measure);
}

std::optional<std::string> Connection::NextText() {
    std::optional<std::string> text = decoder_.NextText();
    if (text) {
        Shows(Flaw::ShortQueue, ++queued_);
    }
    return text;
}

std::optional<std::string> Connection::Receive(Clock::time_point deadline, Milliseconds framePatience) {
    Clock::time_point frameEnds = Clock::time_point::max();
    for (;;) {
        if (std::optional<std::string> text = NextText()) {
            return text;
        }
        const auto now = Clock::now();
        const bool inside = decoder_.InsideFrame();
        if (inside && frameEnds == Clock::time_point::max()) {
            frameEnds = longestFrame_ == Milliseconds::max() ? frameEnds : now + longestFrame_;
        }
        if (inside && flaws_ != nullptr && framePatience > kImpatience &&
            !Awaits(POLLIN, now + kImpatience)) {
            Shows(Flaw::Impatient);
        }
        const bool came = Awaits(POLLIN, inside ? std::min(now + framePatience, frameEnds) : deadline);
        if (came && now < frameEnds && ReadSome()) {
            continue;
        }
        if (std::optional<std::string> text = decoder_.GiveUp()) {
            return text;
        }
        if (came && ended_) {
            ThrowEnd(inside);
        }
        if (!inside) {
            return std::nullopt;
        }
        if (!Shows(Flaw::NoFrameTimeout)) {
            ThrowUnfinished(frameEnds, framePatience);
        }
        framePatience = kNoEnd;
        frameEnds = now + kNoEnd;
    }
}

void Connection::ThrowEnd(bool inside) const {
    if (inside) {
        Shows(Flaw::MissesEnd);
    }
    throw Breach("the end of the connection " +
                 (inside ? "inside a message: " + decoder_.Progress() : "between two messages"));
}

void Connection::ThrowUnfinished(Clock::time_point frameEnds, Milliseconds framePatience) const {
    const bool isSlow = Clock::now() >= frameEnds;
    throw Breach(fmt::format("a message that {} {} ms: {}",
                             isSlow ? "took longer than" : "remained unfinished for",
                             (isSlow ? longestFrame_ : framePatience).count(), decoder_.Progress()));
}

bool Connection::AwaitEnd(Clock::time_point deadline) {
    while (!ended_ && Awaits(POLLIN, deadline)) {
        ReadSome();
        decoder_.Discard();
    }
    return ended_;
}

bool Connection::Awaits(short events, Clock::time_point deadline) const {
    return WaitFor(socket_.Number(), events, deadline, stop_);
}

/// @return whether the connection goes on
bool Connection::ReadSome() {
    const ssize_t count = recv(socket_.Number(), chunk_.data(), chunk_.size(), 0);
    if (count > 0) {
        decoder_.Append(chunk_.data(), static_cast<std::size_t>(count));
        queued_ = 0;
    } else if (count == -1 && errno != EAGAIN && errno != EINTR && errno != ECONNRESET) {
        ThrowSystemError("recv");
    }
    reset_ = count == -1 && errno == ECONNRESET;
    ended_ = count == 0 || reset_;
    return !ended_;
}

}  // namespace rig::dvr
