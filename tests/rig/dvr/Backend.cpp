#include "tests/rig/dvr/Backend.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace {

constexpr timeval kLongestWait{60, 0};

void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}

/// @return a socket bound to a free local port, and that port
std::pair<rig::Descriptor, int> BindAnyPort() {
    rig::Descriptor bound(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    Require(bind(bound.Number(), reinterpret_cast<sockaddr*>(&address), size) == 0, "bind");
    Require(getsockname(bound.Number(), reinterpret_cast<sockaddr*>(&address), &size) == 0, "getsockname");
    return {std::move(bound), ntohs(address.sin_port)};
}

std::string PrefixOf(const std::string& text) {
    std::string prefix;
    std::size_t length = text.size();
    for (; length > 0x7f; length >>= 7) {
        prefix += static_cast<char>((length & 0x7f) | 0x80);
    }
    prefix += static_cast<char>(length);
    return prefix;
}

}  // namespace

int UnusedPort() {
    return BindAnyPort().second;
}

BackendConnection::BackendConnection(rig::Descriptor socket) : socket_(std::move(socket)) {
    setsockopt(socket_.Number(), SOL_SOCKET, SO_RCVTIMEO, &kLongestWait, sizeof kLongestWait);
}

std::string BackendConnection::Read() {
    std::size_t length = 0;
    for (unsigned int shift = 0;; shift += 7) {
        const auto byte = static_cast<unsigned char>(ReadBytes(1)[0]);
        length |= static_cast<std::size_t>(byte & 0x7f) << shift;
        if (byte < 0x80) {
            return ReadBytes(length);
        }
    }
}

std::string BackendConnection::ReadBytes(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t got = 0; got < count;) {
        const ssize_t some = recv(socket_.Number(), bytes.data() + got, count - got, 0);
        Require(some > 0, "the backend expected more bytes");
        got += static_cast<std::size_t>(some);
    }
    return bytes;
}

bool BackendConnection::IsClosedByPeer() {
    char byte = 0;
    return recv(socket_.Number(), &byte, 1, 0) == 0;
}

void BackendConnection::Send(const std::string& text) {
    SendBytes(PrefixOf(text));
    SendBytes(text);
}

void BackendConnection::SendAtOnce(const std::string& text) {
    SendBytes(PrefixOf(text) + text);
}

void BackendConnection::SendBytes(const std::string& bytes) {
    Require(send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
                static_cast<ssize_t>(bytes.size()),
            "the backend could not send");
}

void BackendConnection::TrySend(const std::string& bytes) {
    send(socket_.Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

void BackendConnection::AwaitsClose() {
    std::array<char, 4096> bytes = {};
    ssize_t count = 0;
    do {
        count = recv(socket_.Number(), bytes.data(), bytes.size(), 0);
    } while (count > 0);
    Require(count == 0 || errno == ECONNRESET, "the peer keeps the connection");
}

void BackendConnection::Reset() {
    const linger atOnce{1, 0};
    setsockopt(socket_.Number(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    socket_.Close();
}

void BackendConnection::HalfClose() {
    shutdown(socket_.Number(), SHUT_WR);
}

Backend::Backend(std::vector<Script> scripts) {
    std::tie(listener_, port_) = BindAnyPort();
    Require(listen(listener_.Number(), 1) == 0, "listen");
    setsockopt(listener_.Number(), SOL_SOCKET, SO_RCVTIMEO, &kLongestWait, sizeof kLongestWait);
    thread_ = std::thread([this, scripts = std::move(scripts)] {
        for (const Script& script : scripts) {
            Play(script);
        }
    });
}

Backend::~Backend() {
    Join();
}

void Backend::Join() {
    if (thread_.joinable()) {
        thread_.join();
    }
}

void Backend::Play(const Script& script) const {
    try {
        rig::Descriptor client(accept4(listener_.Number(), nullptr, nullptr, SOCK_CLOEXEC));
        Require(client.IsOpen(), "nobody connected to the backend");
        BackendConnection connection(std::move(client));
        script(connection);
    } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
    }
}
