#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "rig/log/LogReader.h"
#include "tests/rig/judge/FindingsTable.h"
#include "tests/rig/judge/Judging.h"
#include "tests/rig/judge/VerdictsText.h"

// What the judge makes of each stored log, of each log in findings.txt, and of each stored log where it
// breaks off, lacks a line, or has another number in it: one table, of which a reader of a change sees what
// it changes.

namespace {

using rig::result::Result;
using rig::result::RunResult;
using rig::result::Verdict;
using Lines = std::vector<std::string>;

constexpr const char* kHead = R"(# What the judge makes of each log:
# APPROVE=1 velloran_judge_tests --gtest_filter=*WrittenAnew writes it. The number of checks, then those
# that do not pass, with the first letter of their verdict and the lines that prove it; "as it is" also has those that
# pass. Runs are separated by ||. "changed" has what is found if a line of the row in findings.txt is another, and not as it
# is: the number of the line, after - where it is left out, + where it is there twice. A line of the proxy's log may also come at
# another time (t), on another connection (c), from the other side (< > h d), or be about DONE (D) or OK (O).
)";

Lines SplitAtNewlines(const std::string& log) {
    Lines lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string Joined(const Lines& lines) {
    std::string log;
    for (const std::string& line : lines) {
        log += line + "\n";
    }
    return log;
}

/// A change of a log that can be made in several ways.
struct Change {
    std::string name;
    Lines ways;
    std::function<Lines(Lines log, std::size_t way)> make;
};

Lines NumbersTo(std::size_t last) {
    Lines numbers;
    for (std::size_t number = 1; number <= last; ++number) {
        numbers.push_back(std::to_string(number));
    }
    return numbers;
}

const Lines kSwitches = {
    "'invalidEvent' flag set",       "'invalidFile' flag set",   "'rehash' flag set",
    "'transportException' flag set", "'upgrade' flag set",       "'xferInProgress' flag set",
    "'sizeError' flag set",          "'configUpdate' flag set",  "closeEarly set to 1",
    "doneDuration set to 1",         "sleepForGetFile set to 1", "'protocol' option set to 1",
    "'protocol' option set to 2"};

std::vector<Change> ChangesOf(std::size_t lines) {
    return {{"until", NumbersTo(lines),
             [](Lines log, std::size_t way) {
                 log.resize(way + 1);
                 return log;
             }},
            {"without", NumbersTo(lines),
             [](Lines log, std::size_t way) {
                 log[way].clear();
                 return log;
             }},
            {"another number in", NumbersTo(lines),
             [](Lines log, std::size_t way) {
                 char& digit = log[way][log[way].find_last_of("0123456789")];
                 digit = digit == '9' ? '0' : static_cast<char>(digit + 1);
                 return log;
             }},
            {"another switch", kSwitches, [](Lines log, std::size_t way) {
                 log[0] += "\nvelloran:1 " + kSwitches[way];
                 return log;
             }}};
}

/// What the checks of changed logs find where they do not pass, and the first change for which they do.
using Words = std::map<std::string, std::string>;

void AddWords(Words& words, const Result& result, const std::string& way) {
    for (const RunResult& run : result.runs) {
        for (const rig::result::CheckResult& check : run.checks) {
            if (check.verdict != Verdict::Pass) {
                words.emplace(fmt::format("{} {} | {}", *NameOf(check.verdict), check.id,
                                          rig::result::WithoutDetails(check.found)),
                              way);
            }
        }
    }
}

/// @return a row for each result that the change has, with the ways in which it comes about
Lines RowsOf(const std::string& name, const Change& change, const Lines& log, Words& words) {
    Lines results;
    std::map<std::string, std::string> ways;
    for (std::size_t way = 0; way < change.ways.size(); ++way) {
        const Result result = Judged(Joined(change.make(log, way)));
        const std::string text = Verdicts(result, false);
        AddWords(words, result, change.name + " " + change.ways[way]);
        std::string& known = ways[text];
        if (known.empty()) {
            results.push_back(text);
        }
        known += " " + change.ways[way];
    }
    Lines rows;
    for (const std::string& text : results) {
        rows.push_back(fmt::format("{} | {}{} | {}", name, change.name, ways[text], text));
    }
    return rows;
}

void Append(Lines& rows, const Lines& more) {
    rows.insert(rows.end(), more.begin(), more.end());
}

/// The logs that are changed: the others are parts of these.
const std::set<std::string> kChanged = {
    "all-faults-2.0", "clean-1.0",  "close-done-2.0", "config-2.0",
    "d1-wrong-file",  "rehash-2.0", "file-2.0",       "d2-no-answer-on-EVENT_XFER_ACK",
    "size-2.0",       "upgrade-2.0"};

Lines RowsOfLog(const std::string& name) {
    const std::string log = RealLog(name);
    const Result result = Judged(log);
    Lines rows = {name + " | as it is | " + Verdicts(result, true),
                  name + " | dialogue | " + Dialogue(result), name + " | messages | " + Messages(log)};
    const Lines lines = SplitAtNewlines(log);
    Words words;
    AddWords(words, result, "as it is");
    for (const Change& change : ChangesOf(lines.size())) {
        if (kChanged.count(name) > 0) {
            Append(rows, RowsOf(name, change, lines, words));
        }
    }
    for (const auto& [text, way] : words) {
        rows.push_back(fmt::format("{} | {} | {}", name, way, text));
    }
    return rows;
}

bool IsOfStoredLogs(std::string_view check) {
    return check.rfind("wire.", 0) != 0 && check.rfind("fault.", 0) != 0 && check.rfind("delivery.", 0) != 0;
}

/// The verdicts, with what is found of the proxy's log and of delivered files, which no stored log has.
std::set<std::string> VerdictsOn(const FindingsRow& row) try {
    std::set<std::string> found;
    const Result result = ResultOf(row);
    for (const RunResult& run : result.runs) {
        for (const rig::result::CheckResult& check : run.checks) {
            const std::string verdict = fmt::format("{} {}", *NameOf(check.verdict), check.id);
            if (!IsOfStoredLogs(check.id)) {
                found.insert(verdict + ": " + check.found);
            } else if (check.verdict != Verdict::NotReached) {
                found.insert(verdict);
            }
        }
    }
    return found;
} catch (const rig::log::Unreadable&) {
    return {"refused"};
}

/// @return what a line of a recipe may become, by the mark of that change in the table
std::map<char, Lines> ChangedLines(const std::string& line) {
    std::map<char, Lines> changed = {{'-', {}}};
    if (line.front() != '&') {
        return changed;
    }
    changed['+'] = {line, line};
    static const std::vector<std::tuple<char, std::regex, const char*>> kEdits = {
        {'<', std::regex(" > "), " < "},
        {'>', std::regex(" < "), " > "},
        {'D', std::regex(R"re(( [<>] |"message":")\w+)re"), "$1DONE"},
        {'O', std::regex(R"re(( [<>] |"message":")\w+)re"), "$1OK"},
        {'c', std::regex("^(& \\S+) [1-9]"), "$1 9"},
        {'h', std::regex(R"re("by":"dvr")re"), R"re("by":"harness")re"},
        {'d', std::regex(R"re("by":"(harness|proxy)")re"), R"re("by":"dvr")re"},
        {'t', std::regex("^& \\d*"), "& 7"}};
    for (const auto& [mark, part, replacement] : kEdits) {
        std::string edited = std::regex_replace(line, part, replacement);
        if (edited != line) {
            changed[mark] = {std::move(edited)};
        }
    }
    return changed;
}

/// @return a row for each result that a recipe has with one of its lines changed: what is found then and not
/// before
Lines RowsOfChanged(const FindingsRow& row) {
    const std::set<std::string> before = VerdictsOn(row);
    Lines results;
    std::map<std::string, std::string> ways;
    for (std::size_t line = 0; line < row.recipe.size(); ++line) {
        for (const auto& [mark, lines] : ChangedLines(row.recipe[line])) {
            FindingsRow changed = row;
            const auto at = changed.recipe.begin() + static_cast<std::ptrdiff_t>(line);
            changed.recipe.insert(changed.recipe.erase(at), lines.begin(), lines.end());
            const std::set<std::string> after = VerdictsOn(changed);
            Lines news;
            std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                                std::back_inserter(news));
            const std::string text = fmt::format("{}", fmt::join(news, "; "));
            std::string& known = ways[text];
            if (known.empty()) {
                results.push_back(text);
            }
            known += fmt::format(" {}{}", mark, line + 1);
        }
    }
    Lines rows;
    for (const std::string& text : results) {
        rows.push_back(fmt::format("{} | changed{} | {}", row.title, ways[text], text));
    }
    return rows;
}

Lines RowsOfFindings() {
    Lines rows;
    for (const FindingsRow& row : ReadFindings()) {
        const Result result = ResultOf(row);
        rows.push_back(row.title + " | as it is | " + Verdicts(result, true));
        rows.push_back(row.title + " | times | " + Times(result));
        rows.push_back(row.title + " | dialogue | " + Dialogue(result));
        Append(rows, RowsOfChanged(row));
    }
    return rows;
}

Lines Logs() {
    Lines names;
    for (const auto& entry : std::filesystem::directory_iterator(VELLORAN_LOGS)) {
        if (entry.path().extension() == ".log") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// @param name  with which the rows begin
void ExpectInTable(const Lines& rows, const std::string& name) {
    std::ifstream file(VELLORAN_VERDICTS);
    Lines left;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(name + " | ", 0) == 0) {
            left.push_back(line);
        }
    }
    for (const std::string& row : rows) {
        const auto found = std::find(left.begin(), left.end(), row);
        EXPECT_NE(found, left.end()) << "not in the table: " << row;
        if (found != left.end()) {
            left.erase(found);
        }
    }
    EXPECT_TRUE(left.empty()) << "only in the table: " << left.front();
}

class StoredLog : public testing::TestWithParam<std::string> {};

TEST_P(StoredLog, IsJudgedAsInTheTable) {
    ExpectInTable(RowsOfLog(GetParam()), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Verdicts, StoredLog, testing::ValuesIn(Logs()), [](const auto& log) {
    std::string name = log.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
});

TEST(VerdictsOnFindings, AreThoseOfTheTable) {
    std::map<std::string, Lines> rows;
    for (const std::string& row : RowsOfFindings()) {
        rows[row.substr(0, row.find(" | "))].push_back(row);
    }
    for (const auto& [title, ofTitle] : rows) {
        ExpectInTable(ofTitle, title);
    }
}

/// With APPROVE=1 in the environment, what is judged now becomes what is approved. The tests above hold the
/// rows of each log and finding against it: here, there are no others.
TEST(VerdictsTable, IsWrittenAnew) {
    if (std::getenv("APPROVE") != nullptr) {
        std::ofstream table(VELLORAN_VERDICTS);
        table << kHead;
        for (const std::string& log : Logs()) {
            table << "\n" << Joined(RowsOfLog(log));
        }
        table << "\n" << Joined(RowsOfFindings());
    }
    std::set<std::string> names;
    for (const std::string& log : Logs()) {
        names.insert(log);
    }
    for (const FindingsRow& row : ReadFindings()) {
        names.insert(row.title);
    }
    std::ifstream file(VELLORAN_VERDICTS);
    for (std::string line; std::getline(file, line);) {
        EXPECT_TRUE(line.empty() || line.front() == '#' || names.count(line.substr(0, line.find(" | "))) == 1)
            << line;
    }
}

}  // namespace
