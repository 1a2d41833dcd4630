#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rig/campaign/Shard.h"
#include "rig/fault/Cases.h"

namespace rig::campaign {

/// One run of the harness with switches of its own.
struct Case {
    enum class Role { First, Fault, Last };

    std::string name;      // with the dialect: "xfer-2.0"
    int protocol = 2;      // 1 or 2
    std::string switches;  // of the harness, the dialect included: "-p 2 -x"
    std::string sentence;  // what the case shows
    Role role = Role::Fault;
    std::vector<std::string> excluded = {};  // checks of the judge that these switches together cannot reach
    std::optional<fault::FaultCase> fault =
        {};  // that the proxy adds; nothing: the harness's own faults alone
    std::vector<fault::FaultCase> others = {};  // of the proxy, that act in the same export as the fault
};

/// @return the whole table, in the order in which the cases run: 1.0, then 2.0
const std::vector<Case>& AllCases();

/// What the user wants to run.
struct Selection {
    std::string names = "all";        // or names separated by commas
    std::string protocol = "2";       // "1", "2" or "both"
    bool bare = false;                // without the clean exports that run first and last
    std::string faults = {};          // cases of the proxy's faults instead, as fault::Choose takes them
    std::optional<Shard> shard = {};  // only this part of the cases
};

/// How long to wait for each thing, in seconds.
struct Patience {
    double connect = 60;    // for the DVR's connection
    double idle = 30;       // for the next line of the log
    double transfer = 120;  // for that while the DVR transfers a file
    double whole = 600;     // for the end of the case
    double answer = 3;      // for the answer to a request, as the judge counts it
};

/// @return the cases to run, in the table's order; each dialect that has a case begins and ends with its
/// clean export. A name determines its dialect. Throws std::runtime_error for a name that no case has, and
/// when nothing is left to run.
std::vector<Case> Select(const Selection& selection);

/// @return the case in which that fault acts
Case FaultCaseOf(const fault::FaultCase& one);

/// @return what a good DVR does in a case of the proxy's faults: of several duties, the one that asks least
/// of it
fault::Duty DutyOf(const Case& plan);

/// @return a plain export right after the case, which shows that the DVR has survived it
Case RecoveryOf(const Case& plan);

/// @return the table for people to read: name, switches, sentence; of the proxy's faults, if it chooses some;
/// of a part of the campaign, only the cases that it runs
std::string ListCases(const Selection& selection = {});

/// @return whether the harness runs with this switch, such as 'z'
bool Has(const Case& plan, char letter);

/// @return about how many seconds the case takes with a DVR that answers at once
int ExpectedSeconds(const Case& plan);

/// @return how many seconds a good DVR stays away after the case
double SecondsAway(const Case& plan);

}  // namespace rig::campaign
