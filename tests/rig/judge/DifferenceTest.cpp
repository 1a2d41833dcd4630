#include <gtest/gtest.h>

#include "rig/judge/Difference.h"

namespace rig::judge {
namespace {

TEST(Difference, IsPlainWhereOneSeesIt) {
    EXPECT_EQ(Instead("E2", "E1"), "E2 instead of E1");
    EXPECT_EQ(Instead("eVENT1", "Event1"), "eVENT1 instead of Event1");
    EXPECT_EQ(Instead("!", "~"), "! instead of ~");
}

TEST(Difference, IsShownInBytesBetweenNormalForms) {
    EXPECT_EQ(Instead("cafe\xcc\x81", "caf\xc3\xa9"),
              "cafe\xcc\x81 instead of caf\xc3\xa9; from byte 4 on: 65 cc 81 instead of c3 a9");
}

TEST(Difference, IsShownFromTheStartOfACharacter) {
    EXPECT_EQ(Difference("x\xc3\xa4", "x\xc3\xa9"), "; from byte 2 on: c3 a4 instead of c3 a9");
    EXPECT_EQ(Difference("x\xc3", "x\xc3\xa9"), "; from byte 2 on: c3 instead of c3 a9");
    EXPECT_EQ(Difference("\xc3\xa4", "\xc3\xa9"), "; from byte 1 on: c3 a4 instead of c3 a9");
}

TEST(Difference, IsShownInBytesBetweenBlanks) {
    EXPECT_EQ(Difference("a b c", "a bc"), "; from byte 4 on: 20 63 instead of 63");
    EXPECT_EQ(Difference("a b", "a b"), "");
}

TEST(Difference, IsExplainedWhereTheHarnessTookBlanksForFewer) {
    constexpr const char* kBlanks =
        "; of blanks in a text the harness takes one for several, and none at the ends: those that matter "
        "must be references (&#32;)";
    EXPECT_EQ(Difference("a b ", "a b"), std::string("; from byte 4 on: 20 instead of missing") + kBlanks);
    EXPECT_EQ(Difference(" \ta\n b", "a b"),
              std::string("; from byte 1 on: 20 09 61 0a instead of 61 20 62") + kBlanks);
    EXPECT_EQ(Difference("a b", "a  b"), "; from byte 3 on: 62 instead of 20 62");
}

TEST(Difference, IsExplainedWhereTheHarnessTookAReferenceForAByte) {
    constexpr const char* kReference =
        "; a reference to a character beyond 7f is one byte for the harness: write it in UTF-8";
    EXPECT_EQ(Difference("\xe2\x83\xad", "\xed"),
              std::string("; from byte 1 on: e2 83 ad instead of ed") + kReference);
    EXPECT_EQ(Difference("\xed", "\xe2\x83\xad"), "; from byte 1 on: ed instead of e2 83 ad");
}

}  // namespace
}  // namespace rig::judge
