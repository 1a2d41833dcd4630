#include <algorithm>
#include <csignal>

#include "tests/rig/proxy/Peers.h"
#include "tests/support/Until.h"

// Each manner in which a connection ends, by each party.
namespace {

class ProxyEnding : public ProxyTest, public testing::WithParamInterface<const char*> {
 protected:
    /// The party that ends it, and the other.
    struct Parties {
        Peer one;
        Peer other;
    };

    Parties ConnectParties() {
        Pair pair = Connect();
        if (IsDvr()) {
            return {std::move(pair.dvr), std::move(pair.harness)};
        }
        return {std::move(pair.harness), std::move(pair.dvr)};
    }

    static bool IsDvr() { return std::string("dvr") == GetParam(); }

    static std::string Told(const std::string& event) { return "1 " + event + " " + GetParam(); }

    static std::string Partial(const std::string& bytes) {
        return std::string("1 partial ") + (IsDvr() ? "dvr->harness " : "harness->dvr ") + bytes;
    }
};

TEST_P(ProxyEnding, ByACloseIsPassedOn) {
    auto [one, other] = ConnectParties();
    one.Closes();
    other.ReceivesEnd();
    ExpectTold({Told("half-close")});
    other.Closes();
    ExpectTold({Told("half-close"), Told("close")});
}

TEST_P(ProxyEnding, OfOneDirectionLeavesTheOtherOpen) {
    auto [one, other] = ConnectParties();
    one.Sends("last");
    one.HalfCloses();
    EXPECT_EQ("last", other.Receives(4));
    other.ReceivesEnd();
    other.Sends("answer");
    EXPECT_EQ("answer", one.Receives(6));
    other.HalfCloses();
    one.ReceivesEnd();
}

TEST_P(ProxyEnding, ByAResetIsPassedOn) {
    auto [one, other] = ConnectParties();
    one.Resets();
    other.ReceivesReset();
    ExpectTold({Told("reset")});
}

TEST_P(ProxyEnding, ByAResetComesAfterWhatWasSentBefore) {
    auto [one, other] = ConnectParties();
    one.Sends("\x05in");
    one.Resets();
    EXPECT_EQ("\x05in", other.Receives(3));
    other.ReceivesReset();
    ExpectTold({Partial("1+2"), Told("reset")});
}

TEST_P(ProxyEnding, ByAResetAfterACloseIsPassedOn) {
    auto [one, other] = ConnectParties();
    one.Closes();
    other.ReceivesEnd();
    other.Sends("to nobody");
    other.ReceivesReset();
    ExpectTold({Told("half-close"), (IsDvr() ? "1 partial harness->dvr 1+8" : "1 partial dvr->harness 1+8"),
                Told("reset")});
}

TEST_P(ProxyEnding, ByAResetAfterTheOtherHalfClosedIsPassedOn) {
    auto [one, other] = ConnectParties();
    other.HalfCloses();
    one.ReceivesEnd();
    one.Resets();
    other.ReceivesReset();
    ExpectTold({IsDvr() ? "1 half-close harness" : "1 half-close dvr", Told("reset")});
}

TEST_P(ProxyEnding, ByAResetIsToldFromACloseThatComesAtTheSameTime) {
    auto [one, other] = ConnectParties();
    one.HalfCloses();
    other.ReceivesEnd();
    proxy_.Pauses();
    one.Resets();
    other.HalfCloses();
    proxy_.GoesOn();
    ExpectTold({Told("half-close"), Told("reset")});
}

TEST_P(ProxyEnding, ByAResetThatSendingMeetsFirstComesAfterWhatWasSentBefore) {
    auto [one, other] = ConnectParties();
    proxy_.Pauses();
    one.Sends(
        "\x03"
        "bye");
    one.Resets();
    other.Sends("\x02to");
    proxy_.GoesOn();
    EXPECT_EQ(
        "\x03"
        "bye",
        other.Receives(4));
    other.ReceivesReset();
    Until([this] { return !ProxyTest::Told().empty() && ProxyTest::Told().back() == Told("reset"); });
    const std::vector<std::string> told = ProxyTest::Told();
    EXPECT_EQ(Told("reset"), told.back());
    EXPECT_EQ(0, std::count(told.begin(), told.end(), Told("half-close")));
}

INSTANTIATE_TEST_SUITE_P(By, ProxyEnding, testing::Values("dvr", "harness"),
                         [](const auto& party) { return std::string(party.param); });

TEST_F(ProxyTest, EndsInOrderOnASignal) {
    for (const int signal : {SIGINT, SIGTERM}) {
        RunningProxy proxy(port_.Number());
        Peer dvr = CallAt(proxy.Port());
        Peer harness = port_.Accepts();
        EXPECT_EQ(130, proxy.Ends(signal));
        EXPECT_EQ("", proxy.Errors());
        dvr.ReceivesEnd();
        harness.ReceivesEnd();
        EXPECT_NE(std::string::npos, proxy.Log().back().find(R"("event":"close","by":"proxy"})"));
    }
}

TEST(ProxyWithoutHarness, ResetsTheDvrAndTakesTheNextCall) {
    const HarnessPort port(HarnessPort::Manner::Refuses);
    const RunningProxy proxy(port.Number());
    for (std::size_t call = 1; call <= 3; ++call) {
        CallAt(proxy.Port()).ReceivesReset();
        EXPECT_TRUE(Until([&] { return proxy.Log().size() == 1 + 2 * call; }));
        EXPECT_NE(std::string::npos,
                  proxy.Log().back().find(R"("event":"refused","error":"Connection refused"})"));
    }
}

TEST(ProxyWithAHesitantHarness, PassesOnWhatTheDvrHasSentMeanwhile) {
    const HarnessPort port(HarnessPort::Manner::Hesitates);
    const RunningProxy proxy(port.Number());
    const Peer first = CallAt(port.Number());
    Peer dvr = CallAt(proxy.Port());
    dvr.Sends("early");
    EXPECT_TRUE(Until([&] { return proxy.Log().size() == 2; }));
    port.Accepts();
    EXPECT_EQ("early", port.Accepts().Receives(5));
}

TEST(ProxyWithAHesitantHarness, TellsThatTheDvrHasGivenUp) {
    const HarnessPort port(HarnessPort::Manner::Hesitates);
    const RunningProxy proxy(port.Number());
    const Peer first = CallAt(port.Number());
    Peer dvr = CallAt(proxy.Port());
    EXPECT_TRUE(Until([&] { return proxy.Log().size() == 2; }));
    dvr.Resets();
    EXPECT_TRUE(Until([&] { return proxy.Log().size() == 3; }));
    EXPECT_NE(std::string::npos, proxy.Log().back().find(R"("event":"reset","by":"dvr")"));
}

}  // namespace
