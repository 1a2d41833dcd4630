#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the world's kernel says about its IPv4 TCP sockets.
namespace sockets {

struct Socket {
    std::uint32_t localAddress = 0;  // host byte order
    std::uint16_t localPort = 0;
    std::uint16_t remotePort = 0;
    unsigned int state = 0;   // as in <netinet/tcp.h>: TCP_ESTABLISHED ...
    unsigned int unread = 0;  // bytes received and not yet read by the owner
};

std::vector<Socket> All();

/// Whether a socket listens on the port at this address, which may be all zeroes.
bool IsListening(std::uint16_t port, std::uint32_t address = 0);

/// Bytes that wait for the owner of the socket (local port, remote port); also 0 if there is no such socket.
unsigned int Unread(std::uint16_t localPort, std::uint16_t remotePort);

}  // namespace sockets
