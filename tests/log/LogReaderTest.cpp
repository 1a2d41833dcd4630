#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <vector>

#include "rig/log/LogReader.h"

namespace rig {
namespace {

class LogReader : public testing::Test {
 protected:
    ~LogReader() override { std::remove(path_.c_str()); }
    void Write(const std::string& content) const { std::ofstream(path_, std::ios::binary) << content; }
    std::vector<std::string> Read() const {
        std::vector<std::string> lines;
        ReadLog(path_, [&lines](std::uint64_t number, std::string_view line) {
            EXPECT_EQ(number, lines.size() + 1);
            lines.emplace_back(line);
            return true;
        });
        return lines;
    }

    std::string path_ = testing::TempDir() + "velloran-log-reader-" +
                        testing::UnitTest::GetInstance()->current_test_info()->name();
};

TEST_F(LogReader, GivesEachLineALastOneWithoutNewlineToo) {
    Write("a\n\nb");
    EXPECT_EQ(Read(), (std::vector<std::string>{"a", "", "b"}));
}

TEST_F(LogReader, PutsLinesTogetherThatAreLongerThanAChunk) {
    const std::string line(1'000'000, 'x');
    Write(line + "\nend\n");
    EXPECT_EQ(Read(), (std::vector<std::string>{line, "end"}));
}

TEST_F(LogReader, KeepsNoMoreOfALineThanItsLimit) {
    Write(std::string(kLongestLine + 5'000'000, 'x') + "\nend\n");
    const auto lines = Read();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].size(), kLongestLine);
    EXPECT_EQ(lines[1], "end");
}

TEST_F(LogReader, FollowsAFileUntilToldToStop) {
    Write("a\nb\nc\n");
    int taken = 0;
    FollowLog(path_, [&taken](std::uint64_t /*number*/, std::string_view /*line*/) { return ++taken < 2; });
    EXPECT_EQ(taken, 2);
}

TEST_F(LogReader, SaysWhatCannotBeRead) {
    try {
        ReadLog("/nowhere/run.log", [](std::uint64_t /*number*/, std::string_view /*line*/) { return true; });
        FAIL() << "expected it to throw";
    } catch (const Unreadable& error) {
        EXPECT_STREQ(error.what(), "/nowhere/run.log: expected a log, found: No such file or directory");
    }
}

}  // namespace
}  // namespace rig
