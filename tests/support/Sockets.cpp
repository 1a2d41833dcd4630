#include "tests/support/Sockets.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace sockets {

std::vector<Socket> All() {
    // "  0: 0100007F:1389 0100007F:C350 01 00000000:00000000 ...": addresses in network byte order, printed
    // as numbers of this machine; then the state, bytes unsent and bytes unread.
    std::ifstream table("/proc/self/net/tcp");
    std::vector<Socket> all;
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
        std::replace(line.begin(), line.end(), ':', ' ');
        std::istringstream fields(line);
        unsigned int number = 0, address = 0, local = 0, remoteAddress = 0, remote = 0, state = 0, unsent = 0,
                     unread = 0;
        fields >> number >> std::hex >> address >> local >> remoteAddress >> remote >> state >> unsent >>
            unread;
        if (fields) {
            all.push_back({ntohl(address), static_cast<std::uint16_t>(local),
                           static_cast<std::uint16_t>(remote), state, unread});
        }
    }
    return all;
}

bool IsListening(std::uint16_t port, std::uint32_t address) {
    const std::vector<Socket> all = All();
    return std::any_of(all.begin(), all.end(), [&](const Socket& socket) {
        return socket.state == TCP_LISTEN and socket.localPort == port and socket.localAddress == address;
    });
}

unsigned int Unread(std::uint16_t localPort, std::uint16_t remotePort) {
    for (const Socket& socket : All()) {
        if (socket.localPort == localPort and socket.remotePort == remotePort) {
            return socket.unread;
        }
    }
    return 0;
}

}  // namespace sockets
