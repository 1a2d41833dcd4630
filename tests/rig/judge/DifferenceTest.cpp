#include <gtest/gtest.h>

#include "rig/judge/Difference.h"

namespace rig::judge {
namespace {

TEST(Difference, IsPlainWhereOneSeesIt) {
    EXPECT_EQ(Instead("E2", "E1"), "E2 instead of E1");
    EXPECT_EQ(Instead("eVENT1", "Event1"), "eVENT1 instead of Event1");
}

TEST(Difference, IsShownInBytesBetweenNormalForms) {
    EXPECT_EQ(Instead("cafe\xcc\x81", "caf\xc3\xa9"),
              "cafe\xcc\x81 instead of caf\xc3\xa9; from byte 4 on: 65 cc 81 instead of c3 a9");
}

TEST(Difference, IsShownFromTheStartOfACharacter) {
    EXPECT_EQ(Difference("x\xc3\xa4", "x\xc3\xa9"), "; from byte 2 on: c3 a4 instead of c3 a9");
}

TEST(Difference, IsShownInBytesBetweenBlanks) {
    EXPECT_EQ(Difference("a b ", "a b"), "; from byte 4 on: 20 instead of missing");
    EXPECT_EQ(Difference("a b", "a b"), "");
}

}  // namespace
}  // namespace rig::judge
