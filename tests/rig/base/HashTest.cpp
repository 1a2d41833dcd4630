#include <gtest/gtest.h>

#include "rig/base/Hash.h"

namespace rig {
namespace {

struct HashCase {
    HashKind kind;
    const char* name;
    const char* ofNothing;
    const char* ofAbc;
};

class Hashes : public testing::TestWithParam<HashCase> {};

TEST_P(Hashes, AreThoseOfTheStandards) {
    EXPECT_EQ(Hash(GetParam().kind).Hexadecimal(), GetParam().ofNothing);
    Hash hash(GetParam().kind);
    hash.Add("a", 1);
    hash.Add("bc", 2);
    EXPECT_EQ(hash.Hexadecimal(), GetParam().ofAbc);
}

TEST_P(Hashes, AreKnownByNameAndDigits) {
    EXPECT_EQ(NameOf(GetParam().kind), std::string(GetParam().name));
    EXPECT_EQ(HashKindNamed(GetParam().name), GetParam().kind);
    EXPECT_EQ(HashKindOf(GetParam().ofAbc), GetParam().kind);
}

INSTANTIATE_TEST_SUITE_P(
    Each, Hashes,
    testing::Values(HashCase{HashKind::Crc32, "crc32", "00000000", "352441c2"},
                    HashCase{HashKind::Md5, "md5", "d41d8cd98f00b204e9800998ecf8427e",
                             "900150983cd24fb0d6963f7d28e17f72"},
                    HashCase{HashKind::Sha1, "sha1", "da39a3ee5e6b4b0d3255bfef95601890afd80709",
                             "a9993e364706816aba3e25717850c26c9cd0d89d"},
                    HashCase{HashKind::Sha256, "sha256",
                             "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
                             "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"}),
    [](const auto& one) { return std::string(one.param.name); });

TEST(HashKinds, AreOnlyThoseThatThereAre) {
    EXPECT_FALSE(HashKindNamed("auto").has_value());
    EXPECT_FALSE(HashKindOf("").has_value());
    EXPECT_FALSE(HashKindOf("1234567").has_value());
    EXPECT_FALSE(HashKindOf("1234567g").has_value());
    EXPECT_EQ(HashKindOf("ABCDEF01"), HashKind::Crc32);
}

}  // namespace
}  // namespace rig
