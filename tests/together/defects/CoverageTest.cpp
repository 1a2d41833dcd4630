#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/World.h"
#include "tests/together/defects/ShownLines.h"

// Finds what the tests of defects leave out, using the document that lists the harness's log lines and the
// program's own list of defects.

namespace {

using Line = std::pair<unsigned int, std::string>;

std::string Printed(const Line& line) {
    return std::to_string(line.first) + " \"" + line.second + "\"";
}

/// The cells of a Markdown table row, the first one at index 1.
std::vector<std::string> Cells(const std::string& row) {
    const std::string separator = " | ";
    std::vector<std::string> cells = {""};
    std::size_t start = row.find_first_not_of("| ");
    while (start < row.size()) {
        const std::size_t end = std::min(row.find(separator, start), row.size());
        cells.push_back(row.substr(start, end - start));
        start = end + separator.size();
    }
    cells.resize(std::max<std::size_t>(cells.size(), 3));
    return cells;
}

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
std::set<Line> DocumentedLines() {
    std::set<Line> lines;
    std::istringstream document(ReadFile(VELLORAN_LOG_DOC));
    for (std::string row; std::getline(document, row);) {
        const std::vector<std::string> cells = Cells(row);
        if (cells[1] == "1" or cells[1] == "2") {
            for (const std::string& text : Quoted(cells[2])) {
                lines.emplace(std::stoul(cells[1]), text);
            }
        }
    }
    return lines;
}

std::set<std::string> Suites() {
    std::set<std::string> names;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int suite = 0; suite < all.total_test_suite_count(); ++suite) {
        names.insert(all.GetTestSuite(suite)->name());
    }
    return names;
}

std::set<std::string> Tests() {
    std::set<std::string> names;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int number = 0; number < all.total_test_suite_count(); ++number) {
        const testing::TestSuite& suite = *all.GetTestSuite(number);
        for (int test = 0; test < suite.total_test_count(); ++test) {
            names.insert(std::string(suite.name()) + "." + suite.GetTestInfo(test)->name());
        }
    }
    return names;
}

std::string ListedDefects() {
    std::FILE* const output = popen("'" VELLORAN_RIG "' dvr --list-defects --format markdown", "r");
    std::string text;
    char bytes[4096];
    while (const std::size_t count = std::fread(bytes, 1, sizeof bytes, output)) {
        text.append(bytes, count);
    }
    EXPECT_EQ(0, pclose(output));
    return text;
}

/// missing-reid is played by MissingReid10 and MissingReid20.
std::string SuiteOf(const std::string& defect, const std::string& dialect) {
    std::string suite;
    bool starts = true;
    for (const char letter : defect) {
        if (letter not_eq '-') {
            suite += starts ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
        }
        starts = letter == '-';
    }
    return suite + dialect;
}

TEST(Coverage, EveryDocumentedLineOfLevels1And2IsShownByATestOrCannotBe) {
    std::set<Line> shown;
    for (const ShownLine& line : ShownLines()) {
        shown.emplace(line.level, line.text);
    }
    for (const UnprovokedLine& line : UnprovokedLines()) {
        EXPECT_TRUE(shown.emplace(line.level, line.text).second)
            << Printed({line.level, line.text}) << " is shown and yet said to be beyond any DVR";
    }
    const std::set<Line> documented = DocumentedLines();
    EXPECT_LE(40U, documented.size()) << "the document is not the table that it was";
    for (const Line& line : documented) {
        EXPECT_EQ(1U, shown.count(line)) << "no test shows " << Printed(line);
    }
    for (const Line& line : shown) {
        EXPECT_EQ(1U, documented.count(line)) << "the document does not list " << Printed(line);
    }
}

TEST(Coverage, EveryLineIsShownByATestThatExists) {
    const std::set<std::string> tests = Tests();
    for (const ShownLine& line : ShownLines()) {
        EXPECT_EQ(1U, tests.count(line.test)) << "no test " << line.test;
    }
}

TEST(Coverage, EveryDefectIsPlayedInEachOfItsDialects) {
    const std::set<std::string> suites = Suites();
    std::istringstream listed(ListedDefects());
    std::size_t defects = 0;
    for (std::string row; std::getline(listed, row);) {
        const std::vector<std::string> cells = Cells(row);
        if (Quoted(cells[1]).empty()) {
            continue;
        }
        ++defects;
        const std::string form = Quoted(cells[1]).front();
        const std::string name = form.substr(0, form.find('['));
        for (const std::string dialect : {"1.0", "2.0"}) {
            const bool isShown = cells[2].find(dialect) not_eq std::string::npos;
            const std::string suite = SuiteOf(name, dialect.substr(0, 1) + "0");
            EXPECT_EQ(isShown ? 1U : 0U, suites.count(suite)) << suite;
        }
    }
    EXPECT_LT(40U, defects);
}

}  // namespace
