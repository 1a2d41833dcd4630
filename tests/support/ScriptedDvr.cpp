#include "tests/support/ScriptedDvr.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tests/support/Sockets.h"

namespace {

constexpr std::uint16_t kHarnessPort = 5001;

sockaddr_in Address(const std::string& ip, std::uint16_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    return address;
}

/// The socket calls take every kind of address by this pointer.
const sockaddr* Generic(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

std::string Shown(const std::string& bytes) {
    std::string shown;
    for (const char byte : bytes) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned char>(byte));
        shown += byte >= 0x20 and byte < 0x7f ? std::string(1, byte) : hex;
    }
    return "\"" + shown + "\"";
}

}  // namespace

std::string Prefix(std::uint32_t length) {
    std::string prefix;
    for (; length >= 0x80; length >>= 7) {
        prefix += static_cast<char>(0x80 | (length & 0x7f));
    }
    return prefix + static_cast<char>(length);
}

std::string Frame(const std::string& text) {
    return Prefix(static_cast<std::uint32_t>(text.size())) + text;
}

ScriptedDvr::ScriptedDvr(const std::string& address, std::uint16_t port, Here here)
    : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const int on = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const sockaddr_in own = Address(address, port);
    const sockaddr_in harness = Address(address, kHarnessPort);
    if (bind(fd_, Generic(own), sizeof own) == -1 or connect(fd_, Generic(harness), sizeof harness) == -1) {
        FailAt(here, "cannot connect from " + address + ": " + std::strerror(errno));
    }
}

ScriptedDvr::~ScriptedDvr() {
    HangsUp();
}

std::uint16_t ScriptedDvr::Port() const {
    sockaddr_in own = {};
    socklen_t size = sizeof own;
    getsockname(fd_, reinterpret_cast<sockaddr*>(&own), &size);
    return ntohs(own.sin_port);
}

void ScriptedDvr::Sends(const std::string& text, Here here) {
    SendsBytes(Frame(text), here);
}

void ScriptedDvr::SendsBytes(const std::string& bytes, Here here) {
    if (send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL) not_eq static_cast<ssize_t>(bytes.size())) {
        FailAt(here, std::string("cannot send: ") + std::strerror(errno));
    }
}

void ScriptedDvr::SendsAndSeesRead(const std::string& bytes, Here here) {
    SendsBytes(bytes, here);
    const auto isRead = [this] {
        int unacknowledged = 0;
        ioctl(fd_, SIOCOUTQ, &unacknowledged);
        return unacknowledged == 0 and sockets::Unread(kHarnessPort, Port()) == 0;
    };
    if (not Until(isRead)) {
        FailAt(here, "the harness does not read");
    }
}

void ScriptedDvr::SendsUrgentByte() {
    send(fd_, "!", 1, MSG_OOB | MSG_NOSIGNAL);
}

/// @return the next bytes; fewer at the end of the connection or after kPatience
std::string ScriptedDvr::Read(std::size_t count) {
    const Clock::time_point deadline = Clock::now() + kPatience;
    std::string bytes;
    while (bytes.size() < count) {
        pollfd readable = {fd_, POLLIN, 0};
        if (poll(&readable, 1, MillisecondsUntil(deadline)) <= 0) {
            break;
        }
        char piece[65536];
        const ssize_t got = recv(fd_, piece, std::min(count - bytes.size(), sizeof piece), 0);
        if (got <= 0) {
            break;
        }
        bytes.append(piece, static_cast<std::size_t>(got));
    }
    return bytes;
}

void ScriptedDvr::Receives(const std::string& text, Here here) {
    std::string prefix;
    do {
        const std::string byte = Read(1);
        if (byte.empty()) {
            FailAt(here, "expected the message " + Shown(text) + ", but nothing came");
        }
        prefix += byte;
    } while ((prefix.back() & 0x80) not_eq 0 and prefix.size() < 5);

    std::uint32_t length = 0;
    for (std::size_t index = prefix.size(); index-- > 0;) {
        length = length << 7 | (static_cast<unsigned char>(prefix[index]) & 0x7f);
    }
    const std::string actual = prefix + Read(length);
    if (actual not_eq Frame(text)) {
        FailAt(here,
               "expected the message " + Shown(Frame(text)) + "\nbut received         " + Shown(actual));
    }
}

void ScriptedDvr::ReceivesBytes(const std::string& bytes, Here here) {
    const std::string actual = Read(bytes.size());
    if (actual not_eq bytes) {
        FailAt(here, "expected the bytes " + Shown(bytes) + "\nbut received       " + Shown(actual));
    }
}

void ScriptedDvr::ReceivesEnd(Here here) {
    const std::string actual = Read(1);
    pollfd ended = {fd_, POLLIN | POLLRDHUP, 0};
    poll(&ended, 1, 0);
    if (not actual.empty()) {
        FailAt(here, "expected nothing more, but received " +
                         Shown(actual + (HasSomethingToRead() ? Read(4096) : "")));
    } else if ((ended.revents & (POLLRDHUP | POLLHUP | POLLERR)) == 0) {
        FailAt(here, "expected the harness to close the connection, but it is open");
    }
}

bool ScriptedDvr::IsClosedBefore(Clock::time_point moment) {
    char piece[65536];
    pollfd readable = {fd_, POLLIN, 0};
    while (poll(&readable, 1, MillisecondsUntil(moment)) > 0) {
        if (recv(fd_, piece, sizeof piece, 0) <= 0) {
            return true;
        }
    }
    return false;
}

bool ScriptedDvr::HasSomethingToRead() const {
    pollfd readable = {fd_, POLLIN, 0};
    return poll(&readable, 1, 0) not_eq 0;
}

void ScriptedDvr::HangsUp() {
    if (fd_ not_eq -1) {
        close(fd_);
        fd_ = -1;
    }
}

void ScriptedDvr::Resets() {
    const linger atOnce = {1, 0};
    setsockopt(fd_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    HangsUp();
}

void ScriptedDvr::Vanishes() {
    const int on = 1;
    if (setsockopt(fd_, IPPROTO_TCP, TCP_REPAIR, &on, sizeof on) == -1) {
        ADD_FAILURE() << "cannot vanish: " << std::strerror(errno);
    }
    HangsUp();
}
