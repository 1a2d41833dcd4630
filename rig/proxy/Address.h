#pragma once

#include <sys/socket.h>

#include <optional>
#include <string>

#include "rig/base/Descriptor.h"

namespace rig::proxy {

constexpr int kHighestPort = 65535;

/// What an option says: HOST:PORT, [HOST]:PORT for a host with colons, or PORT alone.
struct HostAndPort {
    std::string host;  // empty: not given
    int port = 0;
};

/// Reads an option's text. @return nothing if it is something else
/// @param lowestPort  0 if the system may choose
std::optional<HostAndPort> ParseHostAndPort(const std::string& text, int lowestPort);

/// An address of IPv4 or IPv6, with its port.
struct Address {
    sockaddr_storage bytes = {};
    socklen_t size = 0;

    const sockaddr* Get() const { return reinterpret_cast<const sockaddr*>(&bytes); }
    sockaddr* Get() { return reinterpret_cast<sockaddr*>(&bytes); }

    /// @return "127.0.0.1:5001", "[::1]:5001"
    std::string Words() const;

    bool IsLoopback() const;
};

/// @return the address; of several the first of IPv4, which is all that the harness listens at. All IPv4
///         addresses of this machine if there is no host.
/// Throws std::runtime_error if the host cannot be resolved.
Address Resolve(const HostAndPort& place, const std::string& option);

/// @return the address of this end, or of the peer
Address OwnAddress(const Descriptor& socket);
Address PeerAddress(const Descriptor& socket);

/// @return whether what is sent to `target` on this machine comes to who listens at `listener`
bool LeadsTo(const Address& target, const Address& listener);

}  // namespace rig::proxy
