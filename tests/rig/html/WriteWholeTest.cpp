#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "rig/base/WriteWhole.h"
#include "rig/html/HtmlReport.h"
#include "tests/rig/result/MadeUp.h"

namespace rig::html {
namespace {

class WriteWholeTest : public testing::Test {
 protected:
    WriteWholeTest() {
        std::string name = testing::TempDir() + "velloran-write-XXXXXX";
        folder_ = mkdtemp(name.data());
    }
    ~WriteWholeTest() override { std::filesystem::remove_all(folder_); }

    std::string Path() const { return folder_ / "report"; }
    std::string Content() const {
        std::ifstream file(Path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::ptrdiff_t Files() const {
        return std::distance(std::filesystem::directory_iterator(folder_),
                             std::filesystem::directory_iterator());
    }

 private:
    std::filesystem::path folder_;
};

TEST_F(WriteWholeTest, ReplacesAFile) {
    WriteWhole(Path(), "first, and longer");
    WriteWhole(Path(), "second");
    EXPECT_EQ(Content(), "second");
    EXPECT_EQ(Files(), 1);
}

TEST_F(WriteWholeTest, SaysWhatItCannotWrite) {
    try {
        WriteWhole("/nowhere/report", "text");
        FAIL() << "expected an exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "/nowhere/report: expected to write a file, found: No such file or directory");
    }
}

TEST_F(WriteWholeTest, LeavesTheOldFileWhereTheNewOneDoesNotFit) {
    const std::string page = HtmlReport(MadeUp());
    WriteWhole(Path(), "the old report");
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{page.size() / 2, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
    EXPECT_THROW(WriteWhole(Path(), page), std::runtime_error);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(Content(), "the old report");
    EXPECT_EQ(Files(), 1);
    WriteWhole(Path(), page);
    EXPECT_EQ(Content(), page);
}

TEST_F(WriteWholeTest, WritesIntoAPipeInsteadOfReplacingIt) {
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    const int pipe = open(Path().c_str(), O_RDWR | O_CLOEXEC);
    WriteWhole(Path(), "text");
    char text[8] = {};
    EXPECT_EQ(read(pipe, text, sizeof text), 4);
    EXPECT_STREQ(text, "text");
    close(pipe);
    EXPECT_TRUE(std::filesystem::is_fifo(Path()));
}

TEST_F(WriteWholeTest, KeepsTheModeOfWhatItReplaces) {
    WriteWhole(Path(), "first");
    std::filesystem::permissions(Path(), std::filesystem::perms::owner_read);
    WriteWhole(Path(), "second");
    EXPECT_EQ(std::filesystem::status(Path()).permissions(), std::filesystem::perms::owner_read);
}

TEST_F(WriteWholeTest, ObeysTheUmask) {
    const mode_t before = umask(0027);
    WriteWhole(Path(), "text");
    umask(before);
    EXPECT_EQ(static_cast<unsigned int>(std::filesystem::status(Path()).permissions()), 0640U);
}

TEST_F(WriteWholeTest, WritesAfterWhatWasPrintedIntoTheSameFile) {
    const int output = dup(STDOUT_FILENO);
    const int file = open(Path().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    dup2(file, STDOUT_FILENO);
    close(file);
    EXPECT_EQ(write(STDOUT_FILENO, "printed\n", 8), 8);
    WriteWhole("/dev/stdout", "report\n");
    dup2(output, STDOUT_FILENO);
    close(output);
    EXPECT_EQ(Content(), "printed\nreport\n");
}

TEST_F(WriteWholeTest, KeepsALinkAndReplacesWhatItLeadsTo) {
    WriteWhole(Path() + ".real", "old");
    std::filesystem::create_symlink(Path() + ".real", Path());
    WriteWhole(Path(), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(Path()));
    EXPECT_EQ(Content(), "new");
    EXPECT_EQ(Files(), 2);
}

}  // namespace
}  // namespace rig::html
