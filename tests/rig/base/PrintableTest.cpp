#include <gtest/gtest.h>

#include <string>

#include "rig/base/Printable.h"

namespace {

TEST(Printable, EscapesWhatCouldForgeALineOrControlATerminal) {
    EXPECT_EQ(rig::Printable("a\nb\rc\td\\e\x1b[0m\x7f" + std::string(1, '\0')),
              "a\\nb\\rc\\td\\\\e\\x1b[0m\\x7f\\x00");
}

TEST(Printable, LeavesUtf8AsItIsAndShowsOtherBytes) {
    EXPECT_EQ(rig::Printable("\xc3\x9f \xff\xdf\xe2\x82"), "\xc3\x9f \\xff\\xdf\\xe2\\x82");
    EXPECT_EQ(rig::WithoutControls("\xc3\x9f \\ \xff"), "\xc3\x9f \\ \\xff");
}

TEST(Printable, CutsNoCharacterInTwo) {
    EXPECT_EQ(rig::Excerpt("a\xc3\x9f"
                           "b",
                           2),
              "a...");
    EXPECT_EQ(rig::Excerpt("a\xc3\x9f"
                           "b",
                           3),
              "a\xc3\x9f...");
    EXPECT_EQ(rig::Beginning("\x80\x80\x80\x80\x80\x80", 5).size(), 5U) << "no character at all";
}

TEST(Printable, ShortensAnExcerptOnlyWhereItMust) {
    EXPECT_EQ(rig::Excerpt("12345", 5), "12345");
    EXPECT_EQ(rig::Excerpt("123456", 5), "12345...");
}

}  // namespace
