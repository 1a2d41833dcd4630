#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace rig {

constexpr std::uint16_t kHarnessPort = 5001;
constexpr double kTimeWait = 60;  // seconds that Linux keeps a connection that both sides have closed

/// This machine's end of a TCP connection.
struct Socket {
    struct End {
        std::uint32_t address = 0;  // IPv4, in network byte order
        std::uint16_t port = 0;
    };
    End own;
    End peer;
    bool isIPv4 = true;
    unsigned int state = 0;  // TCP_ESTABLISHED ...
    bool hasOwner = false;   // a process holds it
    double left = 0;         // seconds until the system forgets it, if it is closed
};

/// What this machine's kernel says of a TCP port. Empty when the harness runs elsewhere.
struct PortUse {
    bool isListening = false;
    std::vector<Socket> connections;  // even long-closed ones, which keep the harness from binding to it

    /// @return whether there is a connection that the other side has not yet closed
    bool IsConnected() const;

    /// @return whether there is one that only the other side has closed
    bool IsClosedByPeer() const;

    /// @return the peers' ports of the connections that are open on this side
    std::set<std::uint16_t> Callers() const;

    /// @return seconds until the system has forgotten all connections, even if the other sides close theirs
    /// as late as they can; nothing if one of them is not closed on this side
    std::optional<double> SecondsHeld() const;
};

/// Looks at both address families.
PortUse LookAtPort(std::uint16_t port);

}  // namespace rig
