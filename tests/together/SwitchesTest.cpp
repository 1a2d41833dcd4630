#include <gtest/gtest.h>

#include <algorithm>

#include "Export.h"

// An export of a good DVR under each switch of the harness and each pair of switches: nothing may fail, and
// the log leaves open what switches.txt says.

namespace {

/// No switch, each one, each pair.
std::vector<std::string> Combinations(const std::vector<std::string>& each) {
    std::vector<std::string> all = {""};
    for (auto one = each.begin(); one not_eq each.end(); ++one) {
        all.push_back(*one);
        std::for_each(one + 1, each.end(), [&](const auto& other) { all.push_back(*one + " " + other); });
    }
    return all;
}

/// The switches of a row before "not".
std::string WantedBy(const SwitchesRow& row) {
    return row.switches.substr(0, row.switches.find(" not "));
}

/// @param each  all switches
/// @return whether the row holds for a run with these switches
bool HoldsFor(const SwitchesRow& row, const std::vector<std::string>& each, const std::string& dialect,
              const std::string& switches) {
    const std::string wanted = WantedBy(row);
    const std::string unwanted = row.switches.substr(wanted.size());
    return row.dialect == dialect and std::all_of(each.begin(), each.end(), [&](const std::string& one) {
               const bool isThere = switches.find(one) not_eq std::string::npos;
               const std::string& other = isThere ? unwanted : wanted;
               return other.find(one) == std::string::npos;
           });
}

/// A row for each run that is played: what it leaves open, by all rows that hold for it.
std::vector<SwitchesRow> AllRuns() {
    const std::vector<std::string> each = ReadEachSwitch();
    const std::vector<SwitchesRow> rows = ReadSwitches();
    std::vector<SwitchesRow> runs;
    for (const std::string dialect : {"1", "2"}) {
        for (const std::string& switches : Combinations(each)) {
            SwitchesRow run{dialect, switches, {}, ""};
            for (const SwitchesRow& row : rows) {
                if (HoldsFor(row, each, dialect, switches)) {
                    run.checks.insert(run.checks.end(), row.checks.begin(), row.checks.end());
                    run.reason = row.reason;
                }
            }
            runs.push_back(run);
        }
    }
    return runs;
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

INSTANTIATE_TEST_SUITE_P(GoodDvr, Switches, testing::ValuesIn(AllRuns()),
                         [](const auto& one) { return NameOf(one.param); });

TEST(SwitchesTable, HasOnlyRowsOfRunsThatArePlayed) {
    const std::vector<std::string> played = Combinations(ReadEachSwitch());
    for (const SwitchesRow& row : ReadSwitches()) {
        EXPECT_EQ(1, std::count(played.begin(), played.end(), WantedBy(row))) << row.switches;
    }
}

}  // namespace
