#include "rig/campaign/execution/Port.h"

#include <netinet/tcp.h>

#include <fstream>
#include <sstream>
#include <string>

namespace rig::campaign {
namespace {

/// @return the number after the last colon of "0100007F:1389", which is hexadecimal
unsigned long PortIn(const std::string& address) {
    return std::stoul(address.substr(address.rfind(':') + 1), nullptr, 16);
}

/// Reads "   0: 0100007F:1389 0100007F:C350 01 ...": number, own address, peer's address, state.
void LookAt(const char* table, std::uint16_t port, PortUse& use) {
    std::ifstream sockets(table);
    std::string line;
    std::getline(sockets, line);
    while (std::getline(sockets, line)) {
        std::istringstream fields(line);
        std::string number, own, other;
        unsigned int state = 0;
        if (!(fields >> number >> own >> other >> std::hex >> state) || PortIn(own) != port) {
            continue;
        }
        use.isListening = use.isListening || state == TCP_LISTEN;
        use.isHeld = use.isHeld || state != TCP_LISTEN;
        use.isConnected = use.isConnected || state == TCP_ESTABLISHED || state == TCP_SYN_RECV;
    }
}

}  // namespace

PortUse LookAtPort(std::uint16_t port) {
    PortUse use;
    LookAt("/proc/self/net/tcp", port, use);
    LookAt("/proc/self/net/tcp6", port, use);
    return use;
}

}  // namespace rig::campaign
