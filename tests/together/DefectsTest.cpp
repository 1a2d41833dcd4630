#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "Export.h"
#include "tests/support/LogLine.h"

// Each row of defects.txt: what the harness logs, how both programs end, and the judge's verdict.

namespace {

constexpr std::size_t kForever = 1000;  // lines

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

std::vector<std::string> OrdinaryLog(const Recipe& recipe) {
    for (const Recipe& stored : ReadRecipes()) {
        if (stored.defect.empty() and stored.dialect == recipe.dialect and
            stored.switches == recipe.switches) {
            return StoredLog(stored.name);
        }
    }
    ADD_FAILURE() << "no stored log of a good DVR in dialect " << recipe.dialect << " with \""
                  << recipe.switches << "\"";
    return {};
}

bool IsTrace(const std::string& line) {
    return IsFramingTrace({static_cast<unsigned int>(std::stoul(line)), line.substr(line.find(' ') + 1)});
}

/// The lines that the ordinary log does not have, or not as often. Of the framing trace only those in
/// `shown`.
std::vector<std::string> Beyond(const std::vector<std::string>& ordinary, std::vector<std::string> log,
                                const std::string& shown) {
    if (log.size() > kForever) {
        log.erase(std::unique(log.begin(), log.end()), log.end());
    }
    std::map<std::string, int> left;
    for (const std::string& line : ordinary) {
        ++left[line];
    }
    std::vector<std::string> lines;
    for (const std::string& line : log) {
        if (--left[line] < 0 and (not IsTrace(line) or shown.find(line + "\n") not_eq std::string::npos)) {
            lines.push_back(line);
        }
    }
    return lines;
}

/// The end without what the table leaves open by "..." at its end.
std::string AsFarAs(const std::string& shown, const std::string& ending) {
    const std::size_t start = shown.rfind("\nSIG") + 1;
    const std::size_t rest = shown.rfind("...\n");
    const bool isOpen = StartsWith(ending, "SIG") and rest not_eq std::string::npos and rest > start;
    return isOpen ? ending.substr(0, rest - start) + "...\n" : ending;
}

bool Acted(const Dvr& dvr, const std::string& defect) {
    const std::vector<std::string> lines = dvr.Transcript();
    return not dvr.MarkedWith(defect.substr(0, defect.find_first_of("= "))).empty() or
           std::any_of(lines.begin(), lines.end(),
                       [](const std::string& line) { return StartsWith(line, "not sent: "); });
}

std::vector<std::string> KeysOf(const std::map<std::string, std::string>& all) {
    std::vector<std::string> keys;
    for (const auto& one : all) {
        keys.push_back(one.first);
    }
    return keys;
}

class Defects : public testing::TestWithParam<DefectRow> {};

TEST_P(Defects, AreLoggedAndJudgedAsTheTableSays) {
    const DefectRow& row = GetParam();
    const Export played(row.recipe);

    const bool isPlain = StyleOfAll().empty();  // the texts are those of a DVR without a style
    if (isPlain) {
        const std::string beyond = Joined(Beyond(OrdinaryLog(row.recipe), played.Log(), row.shown));
        EXPECT_EQ(row.shown, beyond + AsFarAs(row.shown, played.Ending()));
    }
    EXPECT_TRUE(Acted(played.GetDvr(), row.recipe.defect))
        << "no trace of the defect in the DVR's transcript";
    EXPECT_EQ(row.dvrStatus, played.DvrStatus());
    if (isPlain and not row.awaited.empty()) {
        const std::string errors = played.GetDvr().StandardError();
        EXPECT_TRUE(StartsWith(errors, "velloran-rig dvr: expected " + row.awaited + ", found ")) << errors;
    }

    Judged judged = played.Judge();
    EXPECT_EQ(row.verdict, judged.verdict);
    EXPECT_EQ(row.checks, KeysOf(judged.found));
    for (const auto& [check, text] : row.found) {
        EXPECT_TRUE(not isPlain or StartsWith(judged.found[check], text))
            << check << ": " << judged.found[check];
    }
}

INSTANTIATE_TEST_SUITE_P(Dvr, Defects, testing::ValuesIn(ReadDefects()),
                         [](const auto& row) { return row.param.recipe.name; });

}  // namespace
