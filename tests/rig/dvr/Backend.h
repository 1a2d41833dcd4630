#pragma once

#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "rig/base/Descriptor.h"
#include "rig/dvr/wire/Connection.h"

// Time limits: one that no test reaches, and one that some wait for.
constexpr rig::dvr::Milliseconds kLong(15'000);
constexpr rig::dvr::Milliseconds kShort(100);

const std::string kGetXml = R"(<msg req="GET_XML" />)";

/// @return a local TCP port at which nobody listens
int UnusedPort();

/// The backend's end of one connection, driven by a script. Every wait ends after 60 seconds with an
/// exception.
class BackendConnection {
 public:
    explicit BackendConnection(rig::Descriptor socket);

    /// @return the text of the next frame; throws std::runtime_error when there is none
    std::string Read();

    /// Waits until the peer has closed the connection. @return whether it sent nothing more before that
    bool IsClosedByPeer();

    /// Sends the text as one frame, prefix and text separately, as the harness does.
    void Send(const std::string& text);

    /// Sends the text as one frame, in one piece, for tests that send many messages.
    void SendAtOnce(const std::string& text);

    /// Sends bytes as they are.
    void SendBytes(const std::string& bytes);

    /// The same, as far as the peer takes them.
    void TrySend(const std::string& bytes);

    /// Waits until the peer has closed or reset the connection, whatever it sends before.
    void AwaitsClose();

    void Close() { socket_.Close(); }

    /// Ends the connection at once, and what the peer has sent is lost.
    void Reset();

    /// Sends no more.
    void HalfClose();

 private:
    std::string ReadBytes(std::size_t count);

    rig::Descriptor socket_;
};

/// A backend that listens on a local port of its own and plays a script with each client that connects, one
/// after the other, as long as there are scripts.
class Backend {
 public:
    using Script = std::function<void(BackendConnection&)>;

    /// Listens at once, and plays the script in a thread. An exception from the script fails the test.
    explicit Backend(Script script) : Backend(std::vector<Script>{std::move(script)}) {}

    /// The same with a script for each client.
    explicit Backend(std::vector<Script> scripts);
    ~Backend();
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    int Port() const { return port_; }

    /// Waits until the last script is over.
    void Join();

 private:
    void Play(const Script& script) const;

    rig::Descriptor listener_;
    int port_ = 0;
    std::thread thread_;
};
