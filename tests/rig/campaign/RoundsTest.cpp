#include <gtest/gtest.h>

#include "rig/campaign/execution/Rounds.h"

namespace rig::campaign {
namespace {

/// Plays so many exchanges, whose words repeat every so many.
void Play(Rounds& rounds, int count, int period) {
    for (int exchange = 0; exchange < count; ++exchange) {
        rounds.Ask("request " + std::to_string(exchange % period));
        rounds.Answer("answer");
    }
    rounds.Ask("another");
}

class RoundsOf : public testing::TestWithParam<int> {};

TEST_P(RoundsOf, SoManyExchangesAreNoticedTheTwentiethTime) {
    Rounds fewer;
    Play(fewer, 20 * GetParam() - 1, GetParam());
    EXPECT_EQ(fewer.Endless(), "");
    Rounds enough;
    Play(enough, 20 * GetParam(), GetParam());
    EXPECT_NE(enough.Endless(), "");
}

INSTANTIATE_TEST_SUITE_P(Lengths, RoundsOf, testing::Values(1, 2, 3, 8));

TEST(Rounds, AreNamed) {
    Rounds rounds;
    Play(rounds, 40, 2);
    EXPECT_EQ(rounds.Endless(), "20 times in a row, with nothing new: request 0, answer; request 1, answer");
}

TEST(Rounds, EndWithAnythingNew) {
    Rounds rounds;
    Play(rounds, 19, 1);
    Play(rounds, 19, 1);
    EXPECT_EQ(rounds.Endless(), "");
    rounds.Ask("request 0");
    rounds.Answer("answer");
    rounds.Answer("another answer");
    Play(rounds, 19, 1);
    EXPECT_EQ(rounds.Endless(), "");
}

TEST(Rounds, DoNotCountWhatTheDvrSaysWhileItIsNotAsked) {
    Rounds rounds;
    rounds.Answer("OK");
    rounds.Ask("GET_FILE");
    for (int time = 0; time < 100; ++time) {
        rounds.Answer("XFER_IN_PROGRESS");
    }
    rounds.Ask("GET_FILE");
    EXPECT_EQ(rounds.Endless(), "") << "a slow transfer";
}

}  // namespace
}  // namespace rig::campaign
