#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

/// An export of the simulated DVR to the harness.
struct Recipe {
    std::string name;     // of the test, or of the log
    std::string dialect;  // 1 or 2
    std::string defect;   // of the DVR, with its options; may be empty
    std::string switches;
    std::string manners = {};  // options of the DVR; may be empty
    std::string faults = {};   // options of the proxy; may be empty
};

/// A row of defects.txt, where the layout is explained.
struct DefectRow {
    Recipe recipe;
    int dvrStatus = 0;
    std::string awaited;              // by the DVR in the end; empty: anything
    std::vector<std::string> checks;  // sorted
    std::string verdict;
    std::string shown;  // the indented lines but for
    std::map<std::string, std::string>
        found;          // how the texts start that the judge found, by the check's name here
    std::string place;  // FILE:LINE
};

/// A row of switches.txt: what the log of a good DVR leaves open.
struct SwitchesRow {
    std::string dialect;
    std::string switches;
    std::vector<std::string> checks;
    std::string reason;
};

/// What a failed test calls its row.
inline void PrintTo(const Recipe& recipe, std::ostream* out) {
    *out << recipe.name;
}
inline void PrintTo(const DefectRow& row, std::ostream* out) {
    *out << row.place;
}
inline void PrintTo(const SwitchesRow& row, std::ostream* out) {
    *out << "velloran -p " << row.dialect << " " << row.switches;
}

/// These throw std::runtime_error with the line that is not as expected.
std::vector<DefectRow> ReadDefects();
std::vector<std::string> ReadEachSwitch();
std::vector<SwitchesRow> ReadSwitches();
std::vector<Recipe> ReadRecipes();

/// The words of a cell.
std::vector<std::string> WordsOf(const std::string& cell);
