#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "rig/history/Order.h"

using rig::history::IsNaturallyBefore;

namespace {

TEST(NaturalOrder, TakesNumbersAsNumbers) {
    const std::vector<std::string> ordered = {"",
                                              "1.9",
                                              "1.10",
                                              "1.10-rc1",
                                              "2",
                                              "10",
                                              "a007",
                                              "a07b",
                                              "a7c",
                                              "firmware",
                                              "firmware 1.2.9",
                                              "firmware 1.2.10",
                                              "firmware 1.10",
                                              "firmware 18446744073709551617",
                                              "firmware 18446744073709551618",
                                              "firmware x"};
    for (std::size_t one = 0; one < ordered.size(); ++one) {
        for (std::size_t other = 0; other < ordered.size(); ++other) {
            EXPECT_EQ(IsNaturallyBefore(ordered[one], ordered[other]), one < other)
                << '"' << ordered[one] << "\" and \"" << ordered[other] << '"';
        }
    }
}

TEST(NaturalOrder, OfTheSameNumberIsThatOfItsZeros) {
    EXPECT_TRUE(IsNaturallyBefore("1.08", "1.8"));
    EXPECT_FALSE(IsNaturallyBefore("1.8", "1.08"));
    EXPECT_TRUE(IsNaturallyBefore("0", "00"));
}

}  // namespace
