#pragma once

#include <string>
#include <vector>

/// An export of the simulated DVR to the harness.
struct Recipe {
    std::string name;     // of the test, or of the log
    std::string dialect;  // 1 or 2
    std::string defect;   // of the DVR, with its options; may be empty
    std::string switches;
};

/// A row of defects.txt, where the layout is explained.
struct DefectRow {
    Recipe recipe;
    int dvrStatus = 0;
    std::string awaited;  // by the DVR in the end; empty: anything
    std::string checks;
    std::string verdict;
    std::string shown;               // the indented lines but for
    std::vector<std::string> found;  // those of what the judge found, "CHECK: TEXT"
    std::string place;               // FILE:LINE
};

/// A row of switches.txt: what the log of a good DVR leaves open.
struct SwitchesRow {
    std::string dialect;
    std::string switches;
    std::string checks;
    std::string reason;
};

/// These throw std::runtime_error with the line that is not as expected.
std::vector<DefectRow> ReadDefects();
std::vector<SwitchesRow> ReadSwitches();
std::vector<Recipe> ReadRecipes();

/// The words of a cell.
std::vector<std::string> WordsOf(const std::string& cell);
