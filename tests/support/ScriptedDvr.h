#pragma once

#include <cstdint>
#include <string>

#include "tests/support/Here.h"
#include "tests/support/Until.h"

/// The text's frame: its length in groups of 7 bits, least significant first, bit 7 set on all but the last;
/// then the text.
std::string Frame(const std::string& text);

/// The length alone.
std::string Prefix(std::uint32_t length);

/// The harness's peer: a TCP client that does what the test says, step by step, right or wrong.
class ScriptedDvr {
 public:
    /// Connects to the harness. With an address and a port, from there; they must belong to the world. Fails
    /// the test if the harness does not listen.
    explicit ScriptedDvr(const std::string& address = "127.0.0.1", std::uint16_t port = 0,
                         Here here = Here::current());
    ~ScriptedDvr();
    ScriptedDvr(const ScriptedDvr&) = delete;
    ScriptedDvr& operator=(const ScriptedDvr&) = delete;

    std::uint16_t Port() const;

    /// Sends one frame, in one piece.
    void Sends(const std::string& text, Here here = Here::current());

    /// Sends bytes as they are, in one piece.
    void SendsBytes(const std::string& bytes, Here here = Here::current());

    /// Sends the bytes and waits until the harness has read them all.
    void SendsAndSeesRead(const std::string& bytes, Here here = Here::current());

    /// Sends one byte of urgent data.
    void SendsUrgentByte();

    /// The next frame has this text, and its prefix is its length.
    void Receives(const std::string& text, Here here = Here::current());

    /// The next bytes are these.
    void ReceivesBytes(const std::string& bytes, Here here = Here::current());

    /// Nothing more comes; the harness closes the connection.
    void ReceivesEnd(Here here = Here::current());

    /// Takes whatever comes until the harness closes the connection or the moment has come.
    /// @return whether it has closed
    bool IsClosedBefore(Clock::time_point moment);

    /// Whether bytes or the end have arrived.
    bool HasSomethingToRead() const;

    /// Closes the connection in the normal way.
    void HangsUp();

    /// Resets the connection; the harness's writes and reads then fail.
    void Resets();

    /// Disappears as in a power failure: the harness learns it from the answer to the next bytes it sends.
    void Vanishes();

 private:
    std::string Read(std::size_t count);

    int fd_;
};
