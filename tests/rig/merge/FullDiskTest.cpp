#include <sys/mount.h>

#include <filesystem>

#include "tests/rig/merge/MadeUp.h"
#include "tests/support/World.h"

namespace {

TEST(FullDisk, LeavesNoFolder) {
    const World world;
    WriteCampaign("/mnt/a", {{"clean-2.0"}});
    std::filesystem::create_directory("/mnt/small");
    ASSERT_EQ(mount("small", "/mnt/small", "tmpfs", 0, "size=16k"), 0);
    const ProgramResult result = RunRig({"merge", "/mnt/a", "--out", "/mnt/small/out"});
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(CountLines(result.errors), 1U) << result.errors;
    ExpectHolds(result.errors, "No space left on device");
    EXPECT_TRUE(std::filesystem::is_empty("/mnt/small"));
}

}  // namespace
