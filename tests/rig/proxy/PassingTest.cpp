#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <random>

#include "tests/rig/proxy/Peers.h"
#include "tests/support/Until.h"

// What comes in on one side goes out on the other.
namespace {

class ProxyPassing : public ProxyTest {};

std::string RandomBytes(std::mt19937& random, std::size_t count) {
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

/// One end of a long stream: what it has still to send, and what it has received.
struct Stream {
    Peer& peer;
    std::string toSend;
    std::size_t sent = 0;
    std::string received = {};
};

/// Sends a random piece and reads one of a random size, as far as that is possible at once.
void Move(Stream& stream, std::mt19937& random) {
    constexpr std::size_t kMostAtOnce = 100'000;
    const std::size_t piece = std::min(random() % kMostAtOnce + 1, stream.toSend.size() - stream.sent);
    const ssize_t sent = send(stream.peer.Number(), stream.toSend.data() + stream.sent, piece, MSG_DONTWAIT);
    stream.sent += sent > 0 ? static_cast<std::size_t>(sent) : 0;
    std::string bytes(random() % kMostAtOnce + 1, '\0');
    const ssize_t received = recv(stream.peer.Number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    stream.received.append(bytes, 0, received > 0 ? static_cast<std::size_t>(received) : 0);
}

TEST_F(ProxyPassing, BytesArriveAsTheyWereSentInBothDirectionsAtOnce) {
    constexpr std::size_t kBytes = 5'000'000;
    std::mt19937 random(1);
    auto [dvr, harness] = Connect();
    Stream one = {dvr, RandomBytes(random, kBytes)};
    Stream other = {harness, RandomBytes(random, kBytes)};
    const auto isWhole = [&] {
        Move(one, random);
        Move(other, random);
        return one.received.size() >= kBytes && other.received.size() >= kBytes;
    };
    const Clock::time_point deadline = Clock::now() + kPatience;
    while (!isWhole() && Clock::now() < deadline) {
    }
    EXPECT_TRUE(one.toSend == other.received);
    EXPECT_TRUE(other.toSend == one.received);

    dvr.HalfCloses();
    harness.ReceivesEnd();
    harness.Sends("after the end of the other direction");
    EXPECT_EQ("after the end of the other direction", dvr.Receives(36));
    harness.Closes();
    dvr.ReceivesEnd();
}

TEST_F(ProxyPassing, PiecesArriveAsTheyWereSent) {
    std::mt19937 random(7);
    auto [dvr, harness] = Connect();
    for (int turn = 0; turn < 200; ++turn) {
        Peer& from = turn % 2 == 0 ? dvr : harness;
        Peer& to = turn % 2 == 0 ? harness : dvr;
        const std::string piece = RandomBytes(random, random() % 16'000 + 1);
        from.Sends(piece);
        ASSERT_EQ(piece.size(), to.ReceivesPiece().size()) << turn;
    }
}

TEST_F(ProxyPassing, UrgentDataStaysUrgent) {
    auto [dvr, harness] = Connect();
    dvr.Sends("before");
    ASSERT_EQ(1, send(dvr.Number(), "!", 1, MSG_OOB));
    dvr.Sends("after");
    EXPECT_EQ("before", harness.Receives(6));
    pollfd urgent = {harness.Number(), POLLPRI, 0};
    ASSERT_EQ(1, poll(&urgent, 1, 20'000));
    char byte = 0;
    EXPECT_EQ(1, recv(harness.Number(), &byte, 1, MSG_OOB));
    EXPECT_EQ('!', byte);
    EXPECT_EQ("after", harness.Receives(5));
}

TEST_F(ProxyPassing, MessagesAreLoggedAndConnectionsToldApart) {
    auto [dvr, harness] = Connect();
    auto [other, otherHarness] = Connect();
    dvr.Sends("\x0f<msg req=\"OK\"/>");
    harness.Receives(16);
    otherHarness.Sends("\x11<msg req=\"DONE\"/>\x05<");
    other.Receives(20);
    harness.Sends("\x14<msg req=\"GET_XML\"/>");
    dvr.Receives(21);
    otherHarness.HalfCloses();
    other.ReceivesEnd();
    ExpectTold({"1 frame dvr->harness OK 1+15", "2 frame harness->dvr DONE 1+17",
                "1 frame harness->dvr GET_XML 1+20", "2 partial harness->dvr 1+1", "2 half-close harness"});
}

}  // namespace
