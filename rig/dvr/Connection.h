#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "rig/dvr/Descriptor.h"
#include "rig/dvr/Frame.h"

struct addrinfo;

namespace rig {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// Where the harness listens.
class Endpoint {
 public:
    /// Resolves the name or address at once. Throws Failure (UsageError) when that fails.
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

/// One TCP connection with the harness. Blocking towards its caller, but never without a limit.
class Connection {
 public:
    /// Connects, trying again for as long as nobody listens there, until `wait` has passed; at least once,
    /// for up to a second. Throws Failure (NothingCame) when no connection came about.
    static Connection Open(const Endpoint& endpoint, Milliseconds wait);

    /// Takes over a connected stream socket.
    explicit Connection(Descriptor socket);

    /// Sends all bytes, in one piece where the system takes them so: the harness pauses after each piece it
    /// reads. Throws Breach when the harness has closed the connection, and Failure (NothingCame) when it
    /// takes no byte for `patience`.
    void Send(const std::string& bytes, Milliseconds patience);

    /// Ends the connection: in order, or at once and with what is unsent lost.
    void Close();
    void Reset();

    /// Waits for one frame. A frame that has begun by the deadline is waited for beyond it, for as long as no
    /// pause between its bytes exceeds `framePatience`.
    /// @return the frame's text; nothing when no frame began before the deadline
    /// Throws Breach when the frame stays unfinished, when its prefix is bad and when the connection ends.
    std::optional<std::string> Receive(Clock::time_point deadline, Milliseconds framePatience);

 private:
    void ReadSome();

    Descriptor socket_;
    FrameDecoder decoder_;
    std::vector<char> chunk_;  // what one read takes in
};

}  // namespace rig
