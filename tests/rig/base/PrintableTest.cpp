#include <gtest/gtest.h>

#include <string>

#include "rig/base/Printable.h"

namespace {

TEST(Printable, EscapesWhatCouldForgeALineOrControlATerminal) {
    EXPECT_EQ(rig::Printable("a\nb\rc\td\\e\x1b[0m\x7f" + std::string(1, '\0')),
              "a\\nb\\rc\\td\\\\e\\x1b[0m\\x7f\\x00");
}

TEST(Printable, LeavesNonAsciiAsItIs) {
    EXPECT_EQ(rig::Printable("Stra\xc3\x9f"
                             "e \xff"),
              "Stra\xc3\x9f"
              "e \xff");
}

TEST(Printable, ShortensAnExcerptOnlyWhereItMust) {
    EXPECT_EQ(rig::Excerpt("12345", 5), "12345");
    EXPECT_EQ(rig::Excerpt("123456", 5), "12345...");
}

}  // namespace
