#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "rig/campaign/execution/LogSource.h"
#include "tests/support/TemporaryFolder.h"

namespace rig::campaign {
namespace {

TEST(LogSource, ReadsAPipeWithoutWaiting) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    LogSource source{Descriptor(ends[0])};
    EXPECT_EQ(source.Read(), "");
    EXPECT_EQ(source.Number(), ends[0]);
    ASSERT_EQ(write(ends[1], "line\n", 5), 5);
    EXPECT_EQ(source.Read(), "line\n");
    close(ends[1]);
    EXPECT_EQ(source.Read(), "");
    EXPECT_EQ(source.Number(), -1) << "poll would find an ended pipe readable for ever";
}

TEST(LogSource, FollowsAFileFromItsEnd) {
    const TemporaryFolder folder;
    folder.Write("log", "of an earlier run\n");
    LogSource source((folder.Path() / "log").string());
    EXPECT_EQ(source.Read(), "");
    std::ofstream(folder.Path() / "log", std::ios::app) << "new\n" << std::flush;
    EXPECT_EQ(source.Read(), "new\n");
    EXPECT_EQ(source.Number(), -1);
}

TEST(LogSource, FollowsAFileThatIsNotThereYet) {
    const TemporaryFolder folder;
    LogSource source((folder.Path() / "log").string());
    EXPECT_EQ(source.Read(), "");
    folder.Write("log", "first\n");
    EXPECT_EQ(source.Read(), "first\n");
}

TEST(LogSource, FollowsAFileThatIsCutOrReplaced) {
    const TemporaryFolder folder;
    folder.Write("log", "of an earlier run\n");
    LogSource source((folder.Path() / "log").string());
    folder.Write("log", "cut\n");
    EXPECT_EQ(source.Read(), "cut\n");
    folder.Write("other", "replaced\n");
    std::filesystem::rename(folder.Path() / "other", folder.Path() / "log");
    EXPECT_EQ(source.Read(), "replaced\n");
}

TEST(LogSource, SaysWhatItCannotRead) {
    EXPECT_THROW(LogSource("/dev/null/log"), std::runtime_error);
}

}  // namespace
}  // namespace rig::campaign
