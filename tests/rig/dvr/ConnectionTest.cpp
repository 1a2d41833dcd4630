#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "rig/dvr/wire/Connection.h"
#include "tests/rig/dvr/Backend.h"
#include "tests/rig/dvr/Failures.h"

namespace {

using rig::Descriptor;
using rig::dvr::Clock;
using rig::dvr::Connection;
using rig::dvr::Endpoint;
using rig::dvr::ExitStatus;
using rig::dvr::Milliseconds;

constexpr Milliseconds kLong(10'000);
constexpr Milliseconds kShort(50);

/// A connection whose other end the test controls.
class ConnectionTest : public testing::Test {
 protected:
    explicit ConnectionTest(int type = SOCK_STREAM) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(socketpair(AF_UNIX, type, 0, ends), 0);
        connection_ = std::make_unique<Connection>(Descriptor(ends[0]));
        peer_ = Descriptor(ends[1]);
    }

    void PeerSends(const std::string& bytes) const {
        ASSERT_EQ(write(peer_.Number(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    std::unique_ptr<Connection> connection_;
    Descriptor peer_;
};

TEST_F(ConnectionTest, SendsAFrameInOnePiece) {
    connection_->Send(rig::dvr::EncodeFrame("<msg/>"), kLong);
    char bytes[64];
    ASSERT_EQ(read(peer_.Number(), bytes, sizeof bytes), 7);
    EXPECT_EQ(std::string(bytes, 7), "\x06<msg/>");
}

TEST_F(ConnectionTest, ReceivesFramesOneByOne) {
    PeerSends(
        "\x01"
        "a"
        "\x02"
        "bc");
    EXPECT_EQ(connection_->Receive(Clock::now() + kLong, kLong), "a");
    EXPECT_EQ(connection_->Receive(Clock::now() + kLong, kLong), "bc");
}

TEST_F(ConnectionTest, ChecksOnceEvenAfterTheDeadline) {
    PeerSends(
        "\x01"
        "a");
    EXPECT_EQ(connection_->Receive(Clock::now() - kShort, kLong), "a");
}

TEST_F(ConnectionTest, ReturnsNothingWhenNoFrameBeginsInTime) {
    const auto start = Clock::now();
    EXPECT_EQ(connection_->Receive(start + kShort, kLong), std::nullopt);
    EXPECT_GE(Clock::now(), start + kShort);
}

TEST_F(ConnectionTest, ReportsAMessageThatRemainsUnfinished) {
    PeerSends(
        "\x09"
        "123456");
    EXPECT_EQ(BreachOf([&] { connection_->Receive(Clock::now() + kLong, kShort); }),
              "a message that remained unfinished for 50 ms: announced 9, got 6");
}

TEST_F(ConnectionTest, ReportsTheEndOfTheConnection) {
    peer_.Close();
    EXPECT_EQ(BreachOf([&] { connection_->Receive(Clock::now() + kLong, kLong); }),
              "the end of the connection between two messages");
}

TEST_F(ConnectionTest, ReportsTheEndOfTheConnectionInsideAMessage) {
    PeerSends(
        "\x09"
        "123456");
    peer_.Close();
    EXPECT_EQ(BreachOf([&] { connection_->Receive(Clock::now() + kLong, kLong); }),
              "the end of the connection inside a message: announced 9, got 6");
}

TEST_F(ConnectionTest, ReturnsAWholeFrameBeforeItReportsTheEnd) {
    PeerSends(
        "\x01"
        "a");
    peer_.Close();
    EXPECT_EQ(connection_->Receive(Clock::now() + kLong, kLong), "a");
}

TEST_F(ConnectionTest, ReportsAPeerThatIsGoneWhenItSends) {
    peer_.Close();
    EXPECT_EQ(BreachOf([&] { connection_->Send("bytes", kLong); }),
              "the end of the connection after 0 of 5 bytes were sent");
}

TEST_F(ConnectionTest, ReportsAPeerThatReadsNothing) {
    const std::string much(64 << 20, 'x');
    const std::string failure = FailureOf(ExitStatus::NothingCame, [&] { connection_->Send(much, kShort); });
    EXPECT_NE(failure.find("expected the harness to take 67108864 bytes of a message"), std::string::npos)
        << failure;
    EXPECT_NE(failure.find("then none for 50 ms"), std::string::npos) << failure;
}

/// A connection that keeps separate sends separate.
class PiecesTest : public ConnectionTest {
 protected:
    PiecesTest() : ConnectionTest(SOCK_SEQPACKET) {}

    /// @return the pieces that were sent, up to the end of the connection
    std::vector<std::string> Pieces() {
        connection_->Close();
        std::vector<std::string> pieces;
        char bytes[64];
        while (const ssize_t count = read(peer_.Number(), bytes, sizeof bytes)) {
            pieces.emplace_back(bytes, static_cast<std::size_t>(count));
        }
        return pieces;
    }
};

TEST_F(PiecesTest, AreAsLongAsAskedForAndTheLastOneIsTheRest) {
    connection_->SendInPieces(3, Milliseconds(0));
    connection_->Send("12345678", kLong);
    connection_->Send("abc", kLong);
    connection_->Send("d", kLong);
    connection_->Send("", kLong);
    EXPECT_EQ(Pieces(), (std::vector<std::string>{"123", "456", "78", "abc", "d"}));
}

TEST_F(PiecesTest, AreNotMadeUnlessAskedFor) {
    connection_->Send("12345678", kLong);
    EXPECT_EQ(Pieces(), std::vector<std::string>{"12345678"});
}

TEST_F(PiecesTest, HavePausesOnlyBetweenThem) {
    connection_->SendInPieces(2, Milliseconds(20));
    const auto start = Clock::now();
    connection_->Send("12345", kLong);
    EXPECT_GE(Clock::now() - start, Milliseconds(40));
    connection_->SendInPieces(5, kLong);
    connection_->Send("12345", kLong);
    EXPECT_LT(Clock::now() - start, kLong);
}

TEST_F(PiecesTest, EndWhenThePeerLeavesInAPause) {
    connection_->SendInPieces(2, kLong);
    const auto start = Clock::now();
    std::thread peer([this] {
        char bytes[2];
        EXPECT_EQ(read(peer_.Number(), bytes, sizeof bytes), 2);
        peer_.Close();
    });
    EXPECT_EQ(BreachOf([&] { connection_->Send("12345", kLong); }),
              "the end of the connection after 2 of 5 bytes were sent");
    peer.join();
    EXPECT_LT(Clock::now() - start, kLong);
}

TEST(Endpoint, MustBeResolvable) {
    const std::string failure = FailureOf(ExitStatus::Unusable, [] { Endpoint("nosuch.invalid", 5001); });
    EXPECT_EQ(failure.find("--host: expected a host that can be resolved, found 'nosuch.invalid': "), 0U)
        << failure;
}

}  // namespace
