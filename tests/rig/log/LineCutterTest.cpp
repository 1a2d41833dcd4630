#include <gtest/gtest.h>

#include <vector>

#include "rig/log/LineCutter.h"

namespace rig::log {
namespace {

TEST(LineCutter, CutsPiecesIntoNumberedLines) {
    std::vector<std::string> lines;
    LineCutter cutter([&lines](std::uint64_t number, std::string_view line) {
        lines.push_back(std::to_string(number) + ":" + std::string(line));
    });
    for (const char* piece : {"one\ntw", "o", "\n\nfo", "ur"}) {
        cutter.Add(piece);
    }
    EXPECT_EQ(lines, (std::vector<std::string>{"1:one", "2:two", "3:"}));
    cutter.End();
    EXPECT_EQ(lines.back(), "4:four");
    cutter.End();
    EXPECT_EQ(lines.size(), 4U);
}

TEST(LineCutter, KeepsOnlyTheStartOfALongLine) {
    std::size_t size = 0;
    LineCutter cutter([&size](std::uint64_t, std::string_view line) { size = line.size(); });
    const std::string piece(kLongestLine / 2 + 1, 'x');
    for (int count = 0; count < 4; ++count) {
        cutter.Add(piece);
    }
    cutter.Add("\n");
    EXPECT_EQ(size, kLongestLine);
}

}  // namespace
}  // namespace rig::log
