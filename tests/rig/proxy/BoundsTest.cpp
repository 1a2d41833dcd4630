#include <netinet/in.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <csignal>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

#include "rig/proxy/Proxy.h"
#include "tests/rig/proxy/Peers.h"
#include "tests/support/Sockets.h"
#include "tests/support/Until.h"

// What the proxy takes of the machine, whatever either side does.
namespace {

constexpr std::size_t kMoreThanTheSystemKeeps = 200'000'000;  // of a connection

class ProxyBounds : public ProxyTest {
 protected:
    /// @return the most memory that the proxy has ever used
    std::size_t PeakKilobytes() const {
        std::ifstream status("/proc/" + std::to_string(proxy_.Id()) + "/status");
        for (std::string word; status >> word;) {
            if (word == "VmHWM:") {
                std::size_t kilobytes = 0;
                status >> kilobytes;
                return kilobytes;
            }
        }
        throw std::runtime_error("expected VmHWM in the status of the proxy");
    }

    double ProcessorSeconds() const {
        clockid_t clock = 0;
        timespec used = {};
        if (clock_getcpuclockid(proxy_.Id(), &clock) != 0 || clock_gettime(clock, &used) != 0) {
            throw std::runtime_error("expected the processor time of the proxy");
        }
        return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
    }

    /// @return whether the log's last event is this one before long
    bool ComesToTell(const std::string& event) const {
        return Until([&] {
            const std::vector<std::string> told = Told();
            return !told.empty() && told.back() == event;
        });
    }

    /// Lets the proxy open no more descriptors.
    void TakeDescriptors() const {
        const std::filesystem::path open = "/proc/" + std::to_string(proxy_.Id()) + "/fd";
        rlim_t free = 0;
        while (std::filesystem::is_symlink(open / std::to_string(free))) {
            ++free;
        }
        const rlimit limit = {free, free};
        ASSERT_EQ(0, prlimit(proxy_.Id(), RLIMIT_NOFILE, &limit, nullptr));
    }
};

constexpr char kNoFrame = '\xff';  // a prefix that does not end: the log stays short

/// Sends until nobody takes any more for a while. @return how many bytes
std::size_t Fill(const Peer& peer) {
    const std::string bytes(100'000, kNoFrame);
    std::size_t sent = 0;
    for (int idle = 0; idle < 20 && sent < kMoreThanTheSystemKeeps;) {
        const ssize_t count = send(peer.Number(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count > 0) {
            sent += static_cast<std::size_t>(count);
            idle = 0;
        } else {
            ++idle;
            poll(nullptr, 0, 20);
        }
    }
    return sent;
}

std::uint16_t PortOf(const Peer& peer, decltype(getsockname) ask) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    ask(peer.Number(), reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

/// Sends until a little of it waits for the proxy, which does not read it as nobody takes what it has.
void HoldUp(Peer& peer) {
    const std::string bytes(30'000, kNoFrame);
    for (int held = 0; held < 4;) {
        const bool isHeld = sockets::Unread(PortOf(peer, getpeername), PortOf(peer, getsockname)) > 0;
        held = isHeld ? held + 1 : 0;
        if (!isHeld) {
            peer.Sends(bytes);
        }
        poll(nullptr, 0, isHeld ? 50 : 2);
    }
}

TEST_F(ProxyBounds, APeerThatDoesNotReadHoldsUpTheOtherAndNotTheMemory) {
    auto [dvr, harness] = Connect();
    dvr.Sends({kNoFrame});
    harness.Receives(1);
    const std::size_t before = PeakKilobytes();
    const std::size_t toHarness = Fill(dvr);
    const std::size_t toDvr = Fill(harness);
    EXPECT_GT(toHarness, 100'000U);
    EXPECT_LT(toHarness, kMoreThanTheSystemKeeps);
    EXPECT_LT(toDvr, kMoreThanTheSystemKeeps);
    EXPECT_LT(PeakKilobytes(), before + 1024);
    EXPECT_EQ(std::string(toHarness, kNoFrame), harness.Receives(toHarness));
    EXPECT_EQ(std::string(toDvr, kNoFrame), dvr.Receives(toDvr));
}

TEST_F(ProxyBounds, AResetIsPassedOnWhileTheOtherDoesNotRead) {
    auto [dvr, harness] = Connect();
    Fill(dvr);
    dvr.Resets();
    EXPECT_TRUE(ComesToTell("1 reset dvr"));
    auto [other, otherHarness] = Connect();
    Fill(other);
    otherHarness.Resets();
    EXPECT_TRUE(ComesToTell("2 reset harness"));
}

TEST_F(ProxyBounds, WaitingCostsNoProcessorTime) {
    auto [dvr, harness] = Connect();
    dvr.HalfCloses();
    harness.ReceivesEnd();
    HoldUp(harness);
    harness.HalfCloses();
    poll(nullptr, 0, 100);
    const double before = ProcessorSeconds();
    poll(nullptr, 0, 500);
    EXPECT_LT(ProcessorSeconds() - before, 0.1);
    EXPECT_EQ(std::vector<std::string>{"1 half-close dvr"}, Told());
}

TEST_F(ProxyBounds, MoreConnectionsThanItTakesWaitUntilOneHasEnded) {
    std::list<Pair> pairs;
    for (std::size_t count = 0; count < rig::proxy::kMostLinks; ++count) {
        pairs.push_back(Connect());
    }
    Peer waiting = CallAt(proxy_.Port());
    poll(nullptr, 0, 100);
    EXPECT_FALSE(port_.HasCall());
    pairs.front().dvr.Resets();
    Peer harness = port_.Accepts();
    waiting.Sends("at last");
    EXPECT_EQ("at last", harness.Receives(7));
}

TEST_F(ProxyBounds, ACallThatNoDescriptorIsLeftForWaitsUntilAnotherHasEnded) {
    auto [dvr, harness] = Connect();
    TakeDescriptors();
    Peer waiting = CallAt(proxy_.Port());
    const double before = ProcessorSeconds();
    poll(nullptr, 0, 300);
    EXPECT_FALSE(port_.HasCall());
    EXPECT_LT(ProcessorSeconds() - before, 0.1);
    dvr.Resets();
    Peer second = port_.Accepts();
    waiting.Sends("at last");
    EXPECT_EQ("at last", second.Receives(7));
}

TEST(ProxyOnAFullDisk, EndsWithALogOfWholeLines) {
    signal(SIGXFSZ, SIG_IGN);  // which the program inherits: writing fails instead
    const HarnessPort port(HarnessPort::Manner::Refuses);
    RunningProxy proxy(port.Number());
    const rlimit limit = {400, 400};  // in the middle of a line
    ASSERT_EQ(0, prlimit(proxy.Id(), RLIMIT_FSIZE, &limit, nullptr));
    CallAt(proxy.Port()).ReceivesReset();
    CallAt(proxy.Port());
    EXPECT_EQ(64, proxy.Ends(0));
    EXPECT_EQ("velloran-rig proxy: --log: expected to write an event, found: File too large\n",
              proxy.Errors());
    EXPECT_EQ(3U, proxy.Log().size());
    EXPECT_EQ('\n', proxy.LogText().back());
}

}  // namespace
