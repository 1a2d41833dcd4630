#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Export.h"
#include "tests/support/Program.h"

// Finds what the tables leave out, using the document that lists the harness's log lines and the program's
// own list of defects.

namespace {

/// The lines of levels 1 and 2 that no DVR can provoke: they come before the harness listens.
const std::set<std::string> kBeyondAnyDvr = {"1 Could not install SIGINT handler", "1 bind failed: NUMBER",
                                             "1 bind failed: REASON"};

/// The texts between back quotes.
std::vector<std::string> Quoted(const std::string& text) {
    std::vector<std::string> found;
    std::istringstream pieces(text);
    std::string piece;
    while (std::getline(pieces, piece, '`') and std::getline(pieces, piece, '`')) {
        found.push_back(piece);
    }
    return found;
}

/// The lines of levels 1 and 2 that the document lists.
std::set<std::string> DocumentedLines() {
    std::set<std::string> lines;
    std::istringstream document(ReadFile(VELLORAN_LOG_DOC));
    for (std::string row; std::getline(document, row);) {
        if (StartsWith(row, "| 1 | ") or StartsWith(row, "| 2 | ")) {
            for (const std::string& text : Quoted(row.substr(6, row.find(" | ", 6) - 6))) {
                lines.insert(row.substr(2, 2) + text);
            }
        }
    }
    return lines;
}

/// A listed line as a pattern, in which words in capitals that stand for values match any.
std::regex PatternOf(const std::string& line) {
    const std::string plain = std::regex_replace(line, std::regex(R"([.^$|()\[\]{}*+?\\])"), "\\$&");
    return std::regex(std::regex_replace(
        plain, std::regex(R"(\b(NUMBER|REASON|N|M|NAME|ID|ROW|COLUMN|DOCUMENT)\b)"), ".*"));
}

/// Every line that the tests of the tables show: those in the tables, and the logs of a good DVR.
std::vector<std::string> ShownLines() {
    std::vector<std::string> lines;
    for (const DefectRow& row : ReadDefects()) {
        std::istringstream shown(row.shown);
        for (std::string line; std::getline(shown, line);) {
            lines.push_back(line);
        }
    }
    for (const Recipe& recipe : ReadRecipes()) {
        const std::vector<std::string> log = StoredLog(recipe.name);
        lines.insert(lines.end(), log.begin(), log.end());
    }
    return lines;
}

TEST(Coverage, EveryDocumentedLineOfLevels1And2IsShownOrCannotBe) {
    const std::vector<std::string> shown = ShownLines();
    const std::set<std::string> documented = DocumentedLines();
    EXPECT_LE(40U, documented.size()) << "the document is not the table that it was";
    for (const std::string& line : documented) {
        const std::regex pattern = PatternOf(line);
        const bool isShown = std::any_of(shown.begin(), shown.end(), [&](const std::string& one) {
            return std::regex_match(one, pattern);
        });
        EXPECT_EQ(kBeyondAnyDvr.count(line) == 0, isShown) << line;
    }
}

TEST(Coverage, EveryDefectHasARowInEachOfItsDialects) {
    std::set<std::string> played;
    for (const DefectRow& row : ReadDefects()) {
        const std::string& defect = row.recipe.defect;
        played.insert(row.recipe.dialect + " " + defect.substr(0, defect.find_first_of("= ")));
    }
    std::set<std::string> listed;
    std::istringstream list(RunRig({"dvr", "--list-defects", "--format", "markdown"}).output);
    const std::regex row(R"(\| `([a-z-]+).*?` \| (.*?) \|.*)");
    std::smatch cells;
    for (std::string line; std::getline(list, line);) {
        for (const char* dialect : {"1", "2"}) {
            if (std::regex_match(line, cells, row) and
                cells.str(2).find(dialect + std::string(".0")) not_eq std::string::npos) {
                listed.insert(dialect + std::string(" ") + cells.str(1));
            }
        }
    }
    EXPECT_LT(80U, listed.size());
    EXPECT_EQ(listed, played);
}

}  // namespace
