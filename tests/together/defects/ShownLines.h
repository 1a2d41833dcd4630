#pragma once

#include <string>
#include <vector>

/// A line of the harness's log as in doc/log.md, where words in capitals stand for values, and the test in
/// which a defect provokes it.
struct ShownLine {
    unsigned int level;
    std::string text;
    std::string test;  // "Suite.Name"
};

/// A line that no DVR can provoke.
struct UnprovokedLine {
    unsigned int level;
    std::string text;
    std::string reason;
};

/// Every line of levels 1 and 2 is in one of these two. A test fails if its log lacks a line that it should
/// show.
const std::vector<ShownLine>& ShownLines();
const std::vector<UnprovokedLine>& UnprovokedLines();

std::vector<ShownLine> LinesShownBy(const std::string& test);

/// Whether the log, line by line as the harness wrote it, has such a line.
bool Shows(const std::string& log, const ShownLine& line);
