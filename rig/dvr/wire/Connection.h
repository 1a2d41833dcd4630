#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rig/base/Descriptor.h"
#include "rig/dvr/wire/Frame.h"
#include "rig/dvr/wire/Waiting.h"

struct addrinfo;

namespace rig::dvr {

/// Where the harness listens.
class Endpoint {
 public:
    /// Resolves the name or address at once. Throws Failure (Unusable) when that fails.
    Endpoint(const std::string& host, int port);
    ~Endpoint();
    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;

    const addrinfo* Addresses() const { return addresses_; }  // never null; belongs to this object
    const std::string& Name() const { return name_; }         // "host:port", for people

 private:
    std::string name_;
    addrinfo* addresses_ = nullptr;
};

/// One TCP connection with the harness. Its calls block, but never without a limit.
class Connection {
 public:
    /// Connects, trying again as long as nobody listens there, until `wait` has passed; at least once, for up
    /// to a second. Throws Failure (NothingCame) when no connection was made.
    /// @param stop  as in HeedStop; -1: none
    static Connection Open(const Endpoint& endpoint, Milliseconds wait, int stop = -1);

    /// Takes over a connected stream socket.
    explicit Connection(Descriptor socket);

    /// From now on sends everything in pieces of this size, the last one shorter, with a pause between them.
    /// @param bytes  above 0
    void SendInPieces(std::size_t bytes, Milliseconds pause);

    /// From now on whatever waits throws Interrupted as soon as this descriptor is readable.
    void HeedStop(int stop) { stop_ = stop; }

    /// From now on a frame must be whole within this time of its first byte.
    void LimitFrames(Milliseconds time) { longestFrame_ = time; }

    /// From now on has these flaws, which must outlive the connection.
    void Weaken(Flaws& flaws);

    /// Sends all bytes, in one piece if the system allows and no pieces are asked for: the harness pauses
    /// after each piece it reads. Throws Breach when the harness has closed the connection, and
    /// Failure (NothingCame) when it takes no byte for `patience`.
    void Send(const std::string& bytes, Milliseconds patience);

    /// Waits for the harness to end the connection, whatever else it sends. @return whether it has by the
    /// deadline
    bool AwaitEnd(Clock::time_point deadline);

    /// Ends the connection: Close in order, Reset at once, losing what is unsent.
    void Close();
    void Reset();

    /// Waits for one frame. A frame that has begun by the deadline may take longer, as long as no pause
    /// between its bytes exceeds `framePatience`.
    /// @return the frame's text; nothing when no frame began before the deadline
    /// Throws Breach when the frame remains unfinished or takes longer than LimitFrames allows, its prefix is
    /// bad or the connection ends. Once size errors are accepted, returns what has come of an unfinished
    /// frame instead.
    std::optional<std::string> Receive(Clock::time_point deadline, Milliseconds framePatience);

    /// @return what turns the bytes into frames, to set it up and to ask it
    FrameDecoder& Decoder() { return decoder_; }

    /// @return whether the harness has ended the connection, judging by what was received and sent; by a
    /// reset
    bool HasEnded() const { return ended_; }
    bool WasReset() const { return reset_; }

 private:
    void SendPart(const std::string& bytes, std::size_t start, std::size_t end, Milliseconds patience);
    bool Awaits(short events, Clock::time_point deadline) const;
    std::optional<std::string> NextText();
    [[noreturn]] void ThrowEnd(bool inside) const;
    [[noreturn]] void ThrowUnfinished(Clock::time_point frameEnds, Milliseconds framePatience) const;
    bool Shows(Flaw flaw, std::size_t measure = 0) const;
    bool ReadSome();

    Descriptor socket_;
    FrameDecoder decoder_;
    std::vector<char> chunk_;  // what one read takes in
    std::size_t pieceBytes_ = SIZE_MAX;
    Milliseconds pause_{0};  // between pieces
    Milliseconds longestFrame_ = Milliseconds::max();
    int stop_ = -1;
    bool ended_ = false;
    bool reset_ = false;
    Flaws* flaws_ = nullptr;
    std::size_t queued_ = 0;  // messages that came with the last bytes
};

}  // namespace rig::dvr
