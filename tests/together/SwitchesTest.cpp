#include <gtest/gtest.h>

#include <algorithm>

#include "Export.h"

// An export of a good DVR under each switch of the harness and each pair of switches: nothing may fail, and
// the log leaves open what switches.txt says.

namespace {

/// No switch, each one, each pair.
std::vector<std::string> Combinations() {
    const std::vector<std::string> single = {"-e", "-f", "-t",   "-r",   "-x",  "-u",
                                             "-g", "-z", "-c 1", "-d 1", "-s 1"};
    std::vector<std::string> all = {""};
    for (auto one = single.begin(); one not_eq single.end(); ++one) {
        all.push_back(*one);
        std::for_each(one + 1, single.end(), [&](const auto& other) { all.push_back(*one + " " + other); });
    }
    return all;
}

std::vector<SwitchesRow> AllRows() {
    std::vector<SwitchesRow> rows;
    const std::vector<SwitchesRow> open = ReadSwitches();
    for (const std::string dialect : {"1", "2"}) {
        for (const std::string& switches : Combinations()) {
            const auto found = std::find_if(open.begin(), open.end(), [&](const SwitchesRow& row) {
                return row.dialect == dialect and row.switches == switches;
            });
            rows.push_back(found == open.end() ? SwitchesRow{dialect, switches, {}, ""} : *found);
        }
    }
    return rows;
}

std::string NameOf(const SwitchesRow& row) {
    std::string name = row.dialect + " alone";
    if (not row.switches.empty()) {
        name = row.dialect + row.switches;
    }
    name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

/// What was found without the times in parentheses at its end.
std::string Lasting(const std::string& found) {
    return found.back() == ')' ? found.substr(0, found.rfind(" (")) : found;
}

class Switches : public testing::TestWithParam<SwitchesRow> {};

TEST_P(Switches, FailNoCheckOfAGoodDvr) {
    const SwitchesRow& row = GetParam();
    const Export played({"", row.dialect, "", row.switches});
    Judged judged = played.Judge();
    for (auto& [check, found] : judged.found) {
        found = Lasting(found);
    }
    std::map<std::string, std::string> open;
    for (const std::string& check : row.checks) {
        open[check + "?"] = row.reason;
    }
    EXPECT_EQ(open, judged.found);
    EXPECT_EQ(open.empty() ? "PASS" : "INCONCLUSIVE", judged.verdict);
}

INSTANTIATE_TEST_SUITE_P(GoodDvr, Switches, testing::ValuesIn(AllRows()),
                         [](const auto& one) { return NameOf(one.param); });

TEST(SwitchesTable, HasNoOtherRows) {
    const std::vector<SwitchesRow> all = AllRows();
    EXPECT_EQ(ReadSwitches().size(),
              static_cast<std::size_t>(std::count_if(
                  all.begin(), all.end(), [](const auto& row) { return not row.checks.empty(); })));
}

}  // namespace
