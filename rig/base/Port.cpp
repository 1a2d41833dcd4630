#include "rig/base/Port.h"

#include <netinet/tcp.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

namespace rig {
namespace {

/// @return "0100007F:1389", hexadecimal, as numbers; of an IPv6 address its last four bytes
Socket::End EndIn(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    return {static_cast<std::uint32_t>(std::stoul(text.substr(colon - 8, 8), nullptr, 16)),
            static_cast<std::uint16_t>(std::stoul(text.substr(colon + 1), nullptr, 16))};
}

/// @return seconds in "03:0000176A", the kind of a timer and its clock ticks in hexadecimal
double SecondsIn(const std::string& timer) {
    return static_cast<double>(std::stoul(timer.substr(timer.find(':') + 1), nullptr, 16)) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
}

/// Reads "   0: 0100007F:1389 0100007F:C350 01 ...": number, own address, peer's address, state, queues,
/// timer, retransmissions, user, probes, inode.
void LookAt(const char* table, std::uint16_t port, PortUse& use) {
    std::ifstream sockets(table);
    std::string line;
    std::getline(sockets, line);
    while (std::getline(sockets, line)) {
        std::istringstream fields(line);
        std::string number, own, peer, queues, timer, retransmissions, user, probes, inode;
        unsigned int state = 0;
        if (!(fields >> number >> own >> peer >> std::hex >> state >> queues >> timer >> retransmissions >>
              user >> probes >> inode) ||
            EndIn(own).port != port) {
            continue;
        }
        if (state == TCP_LISTEN) {
            use.isListening = true;
        } else {
            use.connections.push_back(
                {EndIn(own), EndIn(peer), own.size() == 13, state, inode != "0", SecondsIn(timer)});
        }
    }
}

bool IsOpen(const Socket& socket) {
    return socket.state == TCP_ESTABLISHED || socket.state == TCP_SYN_RECV;
}

}  // namespace

bool PortUse::IsConnected() const {
    return std::any_of(connections.begin(), connections.end(), IsOpen);
}

bool PortUse::IsClosedByPeer() const {
    return std::any_of(connections.begin(), connections.end(),
                       [](const Socket& one) { return one.state == TCP_CLOSE_WAIT; });
}

std::set<std::uint16_t> PortUse::Callers() const {
    std::set<std::uint16_t> callers;
    for (const Socket& one : connections) {
        if (IsOpen(one) || one.state == TCP_CLOSE_WAIT) {
            callers.insert(one.peer.port);
        }
    }
    return callers;
}

std::optional<double> PortUse::SecondsHeld() const {
    double longest = 0;
    for (const Socket& one : connections) {
        if (one.state != TCP_TIME_WAIT && one.state != TCP_FIN_WAIT2) {
            return {};
        }
        longest = std::max(longest, one.left + (one.state == TCP_FIN_WAIT2 ? kTimeWait : 0));
    }
    return longest;
}

PortUse LookAtPort(std::uint16_t port) {
    PortUse use;
    LookAt("/proc/self/net/tcp", port, use);
    LookAt("/proc/self/net/tcp6", port, use);
    return use;
}

}  // namespace rig
