#include <gtest/gtest.h>

#include <filesystem>

#include "rig/campaign/evidence/Fingerprint.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::campaign {
namespace {

TEST(Fingerprint, IsOfTheProgramThatACommandCalls) {
    const TemporaryFolder folder;
    folder.Write("harness", "abc");
    const std::string path = (folder.Path() / "harness").string();
    const char* const kOfAbc =
        "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";  // FIPS 180-2
    EXPECT_EQ(FingerprintOf(path + " -p 2"), kOfAbc);
    EXPECT_EQ(FingerprintOf("'" + path + "' -p 2"), kOfAbc);
}

TEST(Fingerprint, IsNoneOfWhatTheShellLooksFor) {
    const TemporaryFolder folder;
    folder.Write("harness", "another one");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_EQ(FingerprintOf("harness -p 2"), "");
    EXPECT_NE(FingerprintOf("./harness -p 2"), "");
    std::filesystem::current_path(before);
    EXPECT_EQ(FingerprintOf("/no/such/harness"), "");
    EXPECT_EQ(FingerprintOf("ssh rig velloran"), "");
}

}  // namespace
}  // namespace rig::campaign
