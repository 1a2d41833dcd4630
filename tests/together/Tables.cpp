#include "Tables.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

constexpr const char* kDefects = VELLORAN_TOGETHER "/defects.txt";
constexpr const char* kSwitches = VELLORAN_TOGETHER "/switches.txt";
constexpr const char* kRecipes = VELLORAN_LOGS "/recipes.txt";

struct TableLine {
    std::string place;
    std::string text;
};

/// The lines of a file but for those that are empty or start with #.
std::vector<TableLine> LinesIn(const std::string& path) {
    std::ifstream file(path);
    if (not file) {
        throw std::runtime_error(path + ": expected to read it");
    }
    std::vector<TableLine> lines;
    int number = 0;
    for (std::string text; std::getline(file, text);) {
        ++number;
        if (not text.empty() and text.front() not_eq '#') {
            lines.push_back({path + ":" + std::to_string(number), text});
        }
    }
    return lines;
}

std::vector<std::string> CellsOf(const TableLine& line, std::size_t least, std::size_t most) {
    std::vector<std::string> cells;
    std::istringstream text(line.text);
    for (std::string cell; std::getline(text, cell, '|');) {
        const std::size_t start = std::min(cell.find_first_not_of(' '), cell.size());
        cells.push_back(cell.substr(start, cell.find_last_not_of(' ') + 1 - start));
    }
    if (cells.size() < least or cells.size() > most) {
        throw std::runtime_error(line.place + ": expected " + std::to_string(least) + " to " +
                                 std::to_string(most) + " cells, found \"" + line.text + "\"");
    }
    cells.resize(most);
    return cells;
}

using Names = std::map<std::string, std::string>;

/// Takes "$NAME = TEXT". @return whether the line is one
bool Defines(const std::string& text, Names& names) {
    const std::size_t end = text.find(" = ");
    if (text.front() not_eq '$' or end == std::string::npos) {
        return false;
    }
    names[text.substr(1, end - 1)] = text.substr(end + 3);
    return true;
}

std::string Expanded(const TableLine& line, const Names& names) {
    std::string text = line.text;
    for (std::size_t at = text.find('$'); at not_eq std::string::npos; at = text.find('$', at)) {
        const auto end = std::find_if_not(
            text.begin() + static_cast<std::ptrdiff_t>(at) + 1, text.end(),
            [](char c) { return std::isalnum(static_cast<unsigned char>(c)) not_eq 0 or c == '_'; });
        const std::string name(text.begin() + static_cast<std::ptrdiff_t>(at) + 1, end);
        const auto found = names.find(name);
        if (found == names.end()) {
            throw std::runtime_error(line.place + ": nothing is called $" + name);
        }
        text.replace(at, name.size() + 1, found->second);
    }
    return text;
}

/// "2 | missing-hash | -r" is called 2_missing_hash_r.
std::string TestName(const std::string& dialect, const std::string& defect, const std::string& switches) {
    std::string name;
    for (const char letter : dialect + " " + defect + " " + switches) {
        const bool isOfWord = std::isalnum(static_cast<unsigned char>(letter)) not_eq 0;
        if (isOfWord) {
            name += letter;
        } else if (name.back() not_eq '_') {
            name += '_';
        }
    }
    return name.substr(0, name.find_last_not_of('_') + 1);
}

DefectRow RowOf(const TableLine& line) {
    const std::vector<std::string> cells = CellsOf(line, 5, 6);
    DefectRow row;
    row.place = line.place;
    row.recipe = {TestName(cells[0], cells[1], cells[2]), cells[0], cells[1], cells[2]};
    row.dvrStatus = cells[3].empty() ? 0 : cells[3].front() - '0';
    row.awaited = cells[3].substr(std::min<std::size_t>(2, cells[3].size()));
    row.checks = WordsOf(cells[4]);
    std::sort(row.checks.begin(), row.checks.end());
    row.verdict = cells[5].empty() ? "FAIL" : cells[5].substr(0, cells[5].find(':'));
    return row;
}

/// Adds an indented line to the row that it belongs to.
void AddTo(std::vector<DefectRow>& rows, const TableLine& line) {
    const std::string text = line.text.substr(line.text.find_first_not_of(' '));
    const std::size_t check = std::string("found ").size();
    const std::size_t end = text.find(": ");
    if (rows.empty()) {
        throw std::runtime_error(line.place + ": expected a row before \"" + text + "\"");
    } else if (text.compare(0, check, "found ") == 0 and end not_eq std::string::npos) {
        rows.back().found[text.substr(check, end - check)] = text.substr(end + 2);
    } else {
        rows.back().shown += text + "\n";
    }
}

}  // namespace

std::vector<DefectRow> ReadDefects() {
    std::vector<DefectRow> rows;
    Names names;
    for (TableLine line : LinesIn(kDefects)) {
        if (Defines(line.text, names)) {
            continue;
        }
        line.text = Expanded(line, names);
        if (line.text.front() not_eq ' ') {
            rows.push_back(RowOf(line));
        } else {
            AddTo(rows, line);
        }
    }
    return rows;
}

std::vector<std::string> ReadEachSwitch() {
    std::istringstream list(LinesIn(kSwitches).at(0).text);
    std::vector<std::string> each;
    for (std::string one; std::getline(list >> std::ws, one, ',');) {
        each.push_back(one);
    }
    return each;
}

std::vector<SwitchesRow> ReadSwitches() {
    std::vector<SwitchesRow> rows;
    std::string reason;
    for (const TableLine& line : LinesIn(kSwitches)) {
        if (line.text.find('|') == std::string::npos) {
            reason = line.text;
            continue;
        }
        const std::vector<std::string> cells = CellsOf(line, 3, 3);
        rows.push_back({cells[0], cells[1], WordsOf(cells[2]), reason});
    }
    return rows;
}

std::vector<Recipe> ReadRecipes() {
    std::vector<Recipe> recipes;
    for (const TableLine& line : LinesIn(kRecipes)) {
        const std::vector<std::string> cells = CellsOf(line, 3, 4);
        recipes.push_back({cells[0], cells[1], cells[2], cells[3]});
    }
    return recipes;
}

std::vector<std::string> WordsOf(const std::string& cell) {
    std::istringstream words(cell);
    return {std::istream_iterator<std::string>(words), {}};
}
