#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "tests/support/Dialogue.h"

namespace {

class SocketOptions : public Dialect10 {
 protected:
    /// The options that change what a peer sees or how long a call takes, and the flags of the descriptor.
    static std::vector<std::string> Of(int fd) {
        const std::pair<const char*, std::pair<int, int>> options[] = {
            {"SO_REUSEADDR", {SOL_SOCKET, SO_REUSEADDR}},
            {"SO_REUSEPORT", {SOL_SOCKET, SO_REUSEPORT}},
            {"SO_KEEPALIVE", {SOL_SOCKET, SO_KEEPALIVE}},
            {"SO_LINGER", {SOL_SOCKET, SO_LINGER}},
            {"SO_RCVTIMEO", {SOL_SOCKET, SO_RCVTIMEO}},
            {"SO_SNDTIMEO", {SOL_SOCKET, SO_SNDTIMEO}},
            {"SO_OOBINLINE", {SOL_SOCKET, SO_OOBINLINE}},
            {"SO_RCVLOWAT", {SOL_SOCKET, SO_RCVLOWAT}},
            {"TCP_NODELAY", {IPPROTO_TCP, TCP_NODELAY}},
            {"TCP_CORK", {IPPROTO_TCP, TCP_CORK}},
            {"TCP_USER_TIMEOUT", {IPPROTO_TCP, TCP_USER_TIMEOUT}},
            {"TCP_DEFER_ACCEPT", {IPPROTO_TCP, TCP_DEFER_ACCEPT}}};
        std::vector<std::string> values = {"flags " + std::to_string(fcntl(fd, F_GETFL))};
        for (const auto& [name, option] : options) {
            std::array<unsigned char, 16> value = {};
            socklen_t size = value.size();
            EXPECT_EQ(0, getsockopt(fd, option.first, option.second, value.data(), &size)) << name;
            std::string text = name;
            std::for_each(value.begin(), value.begin() + size,
                          [&text](unsigned char byte) { text += " " + std::to_string(byte); });
            values.push_back(text);
        }
        return values;
    }
};

TEST_F(SocketOptions, AreNotSetSoReadsHaveNoTimeLimitAndWritesAreNotHurried) {
    Connect();
    const std::vector<int> descriptors = harness->GetProcess().Descriptors();
    ASSERT_LE(2u, descriptors.size());
    const int fresh = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int server = harness->GetProcess().Copy(descriptors[descriptors.size() - 2]);
    const int client = harness->GetProcess().Copy(descriptors.back());
    EXPECT_EQ(Of(fresh), Of(server));
    EXPECT_EQ(Of(fresh), Of(client));
    for (const int fd : {fresh, server, client}) {
        close(fd);
    }
    Opens();
    Ends();
}

}  // namespace
