#include <algorithm>
#include <chrono>
#include <iostream>

#include "tests/rig/proxy/Peers.h"
#include "tests/support/Until.h"

namespace {

using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::size_t kMessages = 2'000;

/// @return how long a message of 300 bytes takes from one to the other
Microseconds Crossing(Peer& from, Peer& to) {
    static const std::string message = "\xac\x02<msg req=\"EVENT\">" + std::string(277, ' ') + "</msg>";
    const Clock::time_point start = Clock::now();
    from.Sends(message);
    to.Receives(message.size());
    return Clock::now() - start;
}

Microseconds Median(std::vector<Microseconds> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

TEST_F(ProxyTest, AddsLessThanAMillisecondToAMessageInTheMedian) {
    auto [dvr, harness] = Connect();
    const HarnessPort plainPort;
    Peer plainDvr = CallAt(plainPort.Number());
    Peer plainHarness = plainPort.Accepts();
    std::vector<Microseconds> plain;
    std::vector<Microseconds> proxied;
    for (std::size_t count = 0; count < kMessages; count += 2) {
        plain.push_back(Crossing(plainDvr, plainHarness));
        proxied.push_back(Crossing(dvr, harness));
        plain.push_back(Crossing(plainHarness, plainDvr));
        proxied.push_back(Crossing(harness, dvr));
    }
    const Microseconds added = Median(proxied) - Median(plain);
    std::cout << "a message takes " << Median(plain).count() << " us in the median, through the proxy "
              << Median(proxied).count() << " us\n";
    EXPECT_LT(added.count(), 1000);
}

}  // namespace
