#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "tests/harness/world/Trial.h"

namespace {

constexpr int kParts = 16;  // tests, so that they can run side by side

/// How many interrupts all parts make together: 200, or as many as VELLORAN_INTERRUPTS says.
int Interrupts() {
    const char* const number = std::getenv("VELLORAN_INTERRUPTS");
    return number ? std::atoi(number) : 200;
}

/// The seed of the random choices: new each time, or VELLORAN_SEED to repeat a run.
unsigned int Seed() {
    const char* const seed = std::getenv("VELLORAN_SEED");
    return seed ? static_cast<unsigned int>(std::atol(seed)) : std::random_device()();
}

class InterruptAtAnyMoment : public testing::TestWithParam<int> {};

TEST_P(InterruptAtAnyMoment, EndsTheHarnessWithStatus44AndAWholeLog) {
    const unsigned int seed = Seed() + static_cast<unsigned int>(GetParam());
    const int interrupts = (Interrupts() + kParts - 1) / kParts;
    ASSERT_LT(0, interrupts) << "VELLORAN_INTERRUPTS is no number above 0";
    std::mt19937 random(seed);
    for (int number = 0; number < interrupts; ++number) {
        EXPECT_EQ("", InterruptAtRandom(random)) << "interrupt " << number << " of seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Part, InterruptAtAnyMoment, testing::Range(0, kParts));

}  // namespace
