#include "tests/harness/platform/Daemon.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

Daemon::Daemon() : fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_un address = {AF_UNIX, "/dev/log"};
    unlink(address.sun_path);
    if (bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) not_eq 0) {
        throw std::system_error(errno, std::generic_category(), "bind /dev/log");
    }
}

Daemon::~Daemon() {
    close(fd_);
}

std::vector<std::string> Daemon::Take() {
    std::vector<std::string> datagrams;
    for (;;) {
        std::string datagram(1 << 20, '\0');
        const ssize_t size = recv(fd_, datagram.data(), datagram.size(), MSG_DONTWAIT);
        if (size < 0) {
            return datagrams;
        }
        datagram.resize(static_cast<std::size_t>(size));
        datagrams.push_back(datagram);
    }
}
