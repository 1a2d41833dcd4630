#pragma once

#include <string>
#include <vector>

/// A line of the harness's log as doc/log.md lists it, words in capitals standing for values, and the test in
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

/// Every line of levels 1 and 2 is in one of these two. A test whose log lacks a line that it is to show
/// fails.
const std::vector<ShownLine>& ShownLines();
const std::vector<UnprovokedLine>& UnprovokedLines();

std::vector<ShownLine> LinesShownBy(const std::string& test);

/// Whether the log, line by line as the harness wrote it, has such a line.
bool Shows(const std::string& log, const ShownLine& line);
