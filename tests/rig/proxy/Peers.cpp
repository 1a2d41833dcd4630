#include "tests/rig/proxy/Peers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "tests/support/Until.h"

namespace {

constexpr std::size_t kMostOfAPiece = 1 << 20;
constexpr int kPatienceMilliseconds = kPatience / std::chrono::milliseconds(1);

void Require(bool fact, const char* what) {
    if (!fact) {
        throw std::runtime_error(std::string("expected ") + what);
    }
}

sockaddr_in LocalAddress(int port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

std::string InShort(const nlohmann::json& event) {
    std::string text = std::to_string(event.at("connection").get<int>());
    for (const char* const field : {"event", "by", "direction", "message"}) {
        text += event.contains(field) ? " " + event.at(field).get<std::string>() : "";
    }
    if (event.contains("prefixBytes")) {
        text += " " + event.at("prefixBytes").dump() + "+" + event.at("textBytes").dump();
    }
    return text;
}

}  // namespace

Peer::Peer(rig::Descriptor socket) : socket_(std::move(socket)) {
    const timeval patience = {kPatience.count(), 0};
    const int on = 1;
    setsockopt(socket_.Number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(socket_.Number(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    setsockopt(socket_.Number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void Peer::Sends(const std::string& bytes) {
    Require(send(Number(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size()),
            "all bytes to be taken");
}

std::string Peer::ReceivesPiece() {
    std::string bytes(kMostOfAPiece, '\0');
    const ssize_t count = recv(Number(), bytes.data(), bytes.size(), 0);
    Require(count >= 0, "bytes or the end");
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

std::string Peer::Receives(std::size_t count) {
    std::string bytes(count, '\0');
    Require(recv(Number(), bytes.data(), count, MSG_WAITALL) == static_cast<ssize_t>(count), "more bytes");
    return bytes;
}

void Peer::ReceivesEnd() {
    char byte = 0;
    Require(recv(Number(), &byte, 1, 0) == 0, "the end of the connection");
}

void Peer::ReceivesReset() {
    pollfd failed = {Number(), 0, 0};
    int error = 0;
    socklen_t size = sizeof error;
    Require(poll(&failed, 1, kPatienceMilliseconds) == 1 &&
                getsockopt(Number(), SOL_SOCKET, SO_ERROR, &error, &size) == 0,
            "a reset");
    // After the end of what comes it is another error.
    Require(error == ECONNRESET || error == EPIPE, "a reset and no other error");
}

void Peer::HalfCloses() {
    shutdown(Number(), SHUT_WR);
}

void Peer::Resets() {
    const linger atOnce = {1, 0};
    setsockopt(Number(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    Closes();
}

HarnessPort::HarnessPort(Manner manner) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = LocalAddress(0);
    socklen_t size = sizeof address;
    Require(bind(socket_.Number(), reinterpret_cast<sockaddr*>(&address), size) == 0, "a port");
    getsockname(socket_.Number(), reinterpret_cast<sockaddr*>(&address), &size);
    number_ = ntohs(address.sin_port);
    const int backlog = manner == Manner::Hesitates ? 0 : SOMAXCONN;
    Require(manner == Manner::Refuses || listen(socket_.Number(), backlog) == 0, "to listen");
}

Peer HarnessPort::Accepts() const {
    Require(HasCall() || Until([this] { return HasCall(); }), "a connection");
    return Peer(rig::Descriptor(accept4(socket_.Number(), nullptr, nullptr, SOCK_CLOEXEC)));
}

bool HarnessPort::HasCall() const {
    pollfd call = {socket_.Number(), POLLIN, 0};
    return poll(&call, 1, 0) == 1;
}

Peer CallAt(int port) {
    rig::Descriptor caller(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = LocalAddress(port);
    Require(connect(caller.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
            "to be connected");
    return Peer(std::move(caller));
}

ProxyTest::Pair ProxyTest::Connect() const {
    Peer dvr = CallAt(proxy_.Port());
    return {std::move(dvr), port_.Accepts()};
}

std::vector<std::string> ProxyTest::Told() const {
    std::vector<std::string> told;
    for (const std::string& line : proxy_.Log()) {
        const nlohmann::json event = nlohmann::json::parse(line);
        if (event.at("event") != "listen" && event.at("event") != "connect") {
            told.push_back(InShort(event));
        }
    }
    return told;
}

void ProxyTest::ExpectTold(const std::vector<std::string>& expected) const {
    Until([&] { return Told().size() >= expected.size(); });
    EXPECT_EQ(expected, Told());
}
