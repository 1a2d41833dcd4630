#pragma once

#include <functional>
#include <string>
#include <thread>

#include "rig/base/Descriptor.h"
#include "rig/dvr/wire/Connection.h"

// Time limits: one that no test reaches, and one that some wait for.
constexpr rig::dvr::Milliseconds kLong(15'000);
constexpr rig::dvr::Milliseconds kShort(100);

const std::string kGetXml = R"(<msg req="GET_XML" />)";

/// @return a local TCP port at which nobody listens
int UnusedPort();

/// The backend's end of one connection, driven by a script. Every wait ends after 20 seconds with an
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

    void Close() { socket_.Close(); }

 private:
    std::string ReadBytes(std::size_t count);

    rig::Descriptor socket_;
};

/// A backend that listens on a local port of its own and plays a script with the first client that connects.
class Backend {
 public:
    using Script = std::function<void(BackendConnection&)>;

    /// Listens at once, and plays the script in a thread. An exception from the script fails the test.
    explicit Backend(Script script);
    ~Backend();
    Backend(const Backend&) = delete;
    Backend& operator=(const Backend&) = delete;

    int Port() const { return port_; }

    /// Waits until the script is over.
    void Join();

 private:
    void Play(const Script& script) const;

    rig::Descriptor listener_;
    int port_ = 0;
    std::thread thread_;
};
