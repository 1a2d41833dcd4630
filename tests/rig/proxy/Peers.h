#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "rig/base/Descriptor.h"
#include "tests/support/RunningProxy.h"

/// One end of a connection through the proxy. Every wait ends after 20 seconds and fails the test.
class Peer {
 public:
    explicit Peer(rig::Descriptor socket);

    void Sends(const std::string& bytes);

    /// @return what one read gives; empty at the end
    std::string ReceivesPiece();

    /// @return exactly so many bytes
    std::string Receives(std::size_t count);

    /// Nothing more comes: in order, or by a reset.
    void ReceivesEnd();
    void ReceivesReset();

    void HalfCloses();
    void Closes() { socket_.Close(); }
    void Resets();

    int Number() const { return socket_.Number(); }

 private:
    rig::Descriptor socket_;
};

/// Waits where the proxy looks for the harness.
class HarnessPort {
 public:
    enum class Manner { Listens, Refuses, Hesitates };

    /// @param manner  whether it listens; while it hesitates, the first connection waits to be accepted, and
    ///                those after it to be answered at all
    explicit HarnessPort(Manner manner = Manner::Listens);

    int Number() const { return number_; }
    Peer Accepts() const;

    /// @return whether a connection is there to be accepted
    bool HasCall() const;

 private:
    rig::Descriptor socket_;
    int number_ = 0;
};

Peer CallAt(int port);

/// A proxy, and where it looks for the harness.
class ProxyTest : public testing::Test {
 protected:
    struct Pair {
        Peer dvr;
        Peer harness;
    };

    /// Connects through the proxy.
    Pair Connect() const;

    /// @return the log in short: "1 half-close dvr", "1 frame dvr->harness OK 1+15", without "listen" and
    ///         "connect"
    std::vector<std::string> Told() const;

    /// The log comes to tell just this.
    void ExpectTold(const std::vector<std::string>& expected) const;

    HarnessPort port_;
    RunningProxy proxy_{port_.Number()};
};
