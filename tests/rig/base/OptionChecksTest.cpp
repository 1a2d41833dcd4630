#include <gtest/gtest.h>

#include <cstdint>

#include "rig/base/OptionChecks.h"

namespace {

using rig::ParseNumber;

TEST(ParseNumber, TakesOnlyDecimalNumbers) {
    EXPECT_EQ(ParseNumber<int>("5001"), 5001);
    EXPECT_EQ(ParseNumber<int>("05001"), 5001);
    EXPECT_EQ(ParseNumber<int>("-1"), -1);
    EXPECT_EQ(ParseNumber<double>("0.5"), 0.5);
    for (const char* text : {"", " 1", "1 ", "0x10", "1x", "one", "+1", "99999999999"}) {
        EXPECT_EQ(ParseNumber<int>(text), std::nullopt) << text;
    }
    EXPECT_EQ(ParseNumber<std::uint32_t>("-1"), std::nullopt);
}

TEST(Between, IgnoresALeadingZero) {
    CLI::App app;
    int number = 0;
    app.add_option("--number", number)->transform(rig::Between(1, 5001));
    app.parse("--number 05001");
    EXPECT_EQ(number, 5001);
}

TEST(Between, SaysWhatItExpectsAndWhatItFound) {
    CLI::App app;
    double number = 0;
    app.add_option("--number", number)->transform(rig::Between(0.0, 2.0));
    try {
        app.parse("--number 2.5");
        ADD_FAILURE() << "taken";
    } catch (const CLI::ValidationError& error) {
        EXPECT_STREQ(error.what(), "--number: expected a number from 0 to 2, found '2.5'");
    }
    EXPECT_THROW(app.parse("--number nan"), CLI::ValidationError);
}

}  // namespace
