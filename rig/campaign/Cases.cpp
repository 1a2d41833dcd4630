#include "rig/campaign/Cases.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>

#include "rig/campaign/Division.h"
#include "rig/campaign/Search.h"

namespace rig::campaign {
namespace {

using Role = Case::Role;

/// With -x, -r never asks for the hash: -x fires before the answer that -r waits for.
const std::vector<std::string> kRehashChecks = {"rehash.fired", "rehash.attributes", "rehash.same-hash"};

std::vector<Case> FirstDialect() {
    return {
        {"clean-1.0", 1, "-p 1", "A whole export without any fault.", Role::First},
        {"config-1.0", 1, "-p 1 -g", "The DVR refuses a bogus configuration."},
        {"size-1.0", 1, "-p 1 -z", "The DVR does not act on frames that are shorter than announced."},
        {"recovery-1.0", 1, "-p 1", "A whole export again: the DVR has recovered from all faults before it.",
         Role::Last},
    };
}

std::vector<Case> SecondDialectAlone() {
    return {
        {"clean-2.0", 2, "-p 2", "A whole export without any fault.", Role::First},
        {"event-2.0", 2, "-p 2 -e",
         "The DVR refuses an event that it does not have, then gives the true one."},
        {"file-2.0", 2, "-p 2 -f", "The DVR refuses a file of an unknown event, and an unknown file."},
        {"transport-2.0", 2, "-p 2 -t", "The DVR reports a transfer that fails, then completes it."},
        {"rehash-2.0", 2, "-p 2 -r", "The DVR hashes a file again and gives hash and length."},
        {"xfer-2.0", 2, "-p 2 -x",
         "The DVR says that a file asked for again is in transfer, and completes it."},
        {"size-2.0", 2, "-p 2 -z", "The DVR does not act on frames that are shorter than announced."},
        {"config-2.0", 2, "-p 2 -g", "The DVR refuses a bogus configuration."},
        {"upgrade-2.0", 2, "-p 2 -u", "The DVR confirms a software update, then exports as usual."},
        {"close-2.0", 2, "-p 2 -c 1", "The DVR ends its export when DONE comes after the first event."},
        {"done-2.0", 2, "-p 2 -d 1", "The DVR stays away for the minute that DONE asks for."},
        {"sleep-2.0", 2, "-p 2 -s 2", "The DVR tolerates longer pauses between requests."},
    };
}

std::vector<Case> SecondDialectTogether() {
    return {
        {"close-late-2.0", 2, "-p 2 -c 2", "The DVR ends its export when DONE comes after the second event."},
        {"close-done-2.0", 2, "-p 2 -c 1 -d 1", "The DVR obeys an early DONE with a duration."},
        {"event-close-2.0", 2, "-p 2 -e -c 1", "A refused event does not count as one that was exported."},
        {"upgrade-config-2.0", 2, "-p 2 -u -g", "The DVR answers two orders at once, in their order."},
        {"upgrade-event-2.0", 2, "-p 2 -u -e", "The refusal of an event follows the software update."},
        {"file-transport-2.0", 2, "-p 2 -f -t", "Two refusals of a file and its failed transfer in a row."},
        {"transport-rehash-2.0", 2, "-p 2 -t -r", "The file whose transfer failed is hashed again."},
        {"rehash-xfer-2.0", 2, "-p 2 -r -x",
         "One file is asked for three times; a new hash is never asked for.", Role::Fault, kRehashChecks},
        {"faults-2.0", 2, "-p 2 -e -f -t -r -x", "All faults of events and files in one export.", Role::Fault,
         kRehashChecks},
        {"config-size-2.0", 2, "-p 2 -g -z",
         "The DVR does not act on a configuration in a frame that is too short."},
        {"recovery-2.0", 2, "-p 2", "A whole export again: the DVR has recovered from all faults before it.",
         Role::Last},
    };
}

std::set<std::string> Split(const std::string& names) {
    std::set<std::string> all;
    std::istringstream stream(names);
    for (std::string name; std::getline(stream, name, ',');) {
        all.insert(name);
    }
    return all;
}

void CheckNames(const std::set<std::string>& names) {
    for (const std::string& name : names) {
        const bool isKnown = std::any_of(AllCases().begin(), AllCases().end(),
                                         [&name](const Case& plan) { return plan.name == name; });
        if (!isKnown) {
            throw std::runtime_error(
                fmt::format("--cases: expected all or names that --list-cases gives, found \"{}\"", name));
        }
    }
}

bool IsOf(const Case& plan, const std::string& protocol) {
    return protocol == "both" || protocol == std::to_string(plan.protocol);
}

/// Drops the clean exports of dialects of which nothing else was chosen; if bare, all that were not named.
void DropNeedlessCleanExports(std::vector<Case>& plans, const std::set<std::string>& names, bool bare) {
    const std::vector<Case> all = plans;
    const auto isNeedless = [&](const Case& plan) {
        if (plan.role == Role::Fault || names.count(plan.name) > 0) {
            return false;
        }
        return bare || std::none_of(all.begin(), all.end(), [&](const Case& other) {
                   return other.protocol == plan.protocol &&
                          (other.role == Role::Fault || names.count(other.name) > 0);
               });
    };
    plans.erase(std::remove_if(plans.begin(), plans.end(), isNeedless), plans.end());
}

/// With -c 1 an export of 2.0 ends by itself; 1.0 always does.
const char* SwitchesOf(int dialect) {
    return dialect == 1 ? "-p 1" : "-p 2 -c 1";
}

int DialectOf(const Selection& selection) {
    return selection.protocol == "both" ? 0 : std::stoi(selection.protocol);
}

/// @return the cases in the order of the faults; after them those in which several faults act
std::vector<Case> ChosenFaults(const Selection& selection) {
    std::string single;
    std::vector<Case> together;
    std::istringstream names(selection.faults + ",");
    for (std::string name; std::getline(names, name, ',');) {
        if (name.find('+') == std::string::npos) {
            single += (single.empty() ? "" : ",") + name;
            continue;
        }
        Case plan = CaseOf(SequenceOf(name));
        if (DialectOf(selection) == 0 || DialectOf(selection) == plan.protocol) {
            together.push_back(std::move(plan));
        }
    }
    std::vector<Case> plans;
    if (!single.empty() || together.empty()) {
        for (const fault::FaultCase& one : fault::Choose(single, DialectOf(selection))) {
            plans.push_back(FaultCaseOf(one));
        }
    }
    plans.insert(plans.end(), together.begin(), together.end());
    return plans;
}

std::string ListFaultCases(const std::vector<Case>& plans) {
    std::string list;
    for (const Case& plan : plans) {
        if (plan.fault) {
            list += fmt::format("{:<46} {:<9} {}\n", plan.name, NameOf(DutyOf(plan)), plan.sentence);
        }
    }
    return list;
}

/// Each dialect begins with its clean export, as without it no fault is to blame for anything.
std::vector<Case> SelectFaults(const Selection& selection) {
    const std::vector<Case> chosen = ChosenFaults(selection);
    std::vector<Case> plans;
    for (const int dialect : {1, 2}) {
        const std::size_t begin = plans.size();
        std::copy_if(chosen.begin(), chosen.end(), std::back_inserter(plans),
                     [dialect](const Case& one) { return one.protocol == dialect; });
        if (plans.size() > begin && !selection.bare) {
            const auto first = std::find_if(AllCases().begin(), AllCases().end(), [dialect](const Case& one) {
                return one.protocol == dialect && one.role == Role::First;
            });
            plans.insert(plans.begin() + static_cast<std::ptrdiff_t>(begin), *first);
        }
    }
    if (plans.empty()) {
        throw std::runtime_error("--faults: expected at least one case of the --protocol to run, found none");
    }
    return plans;
}

std::vector<Case> SelectSwitches(const Selection& selection) {
    const bool isAll = selection.names == "all";
    const std::set<std::string> names = isAll ? std::set<std::string>() : Split(selection.names);
    CheckNames(names);
    std::vector<Case> plans;
    std::copy_if(AllCases().begin(), AllCases().end(), std::back_inserter(plans), [&](const Case& plan) {
        return isAll ? IsOf(plan, selection.protocol)
                     : plan.role != Role::Fault || names.count(plan.name) > 0;
    });
    DropNeedlessCleanExports(plans, names, selection.bare);
    if (plans.empty()) {
        throw std::runtime_error("--cases: expected at least one case to run, found none");
    }
    return plans;
}

}  // namespace

const std::vector<Case>& AllCases() {
    static const std::vector<Case> kCases = [] {
        std::vector<Case> all = FirstDialect();
        for (const auto& part : {SecondDialectAlone(), SecondDialectTogether()}) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }();
    return kCases;
}

std::vector<Case> Select(const Selection& selection) {
    std::vector<Case> plans = selection.faults.empty() ? SelectSwitches(selection) : SelectFaults(selection);
    return selection.shard ? PartOf(plans, *selection.shard, selection.bare) : plans;
}

Case FaultCaseOf(const fault::FaultCase& one) {
    return {one.Id(), one.dialect, SwitchesOf(one.dialect), one.Sentence(), Role::Fault, {}, one};
}

fault::Duty DutyOf(const Case& plan) {
    fault::Duty duty = plan.fault->fault->duty;
    for (const fault::FaultCase& other : plan.others) {
        duty = std::max(duty, other.fault->duty);
    }
    return duty;
}

Case RecoveryOf(const Case& plan) {
    return {"recovery", plan.protocol, SwitchesOf(plan.protocol),
            "A clean export right after the fault: the DVR has survived it.", Role::Last};
}

std::string ListCases(const Selection& selection) {
    if (!selection.faults.empty()) {
        return ListFaultCases(selection.shard ? Select(selection) : ChosenFaults(selection));
    }
    std::string list;
    for (const Case& plan : selection.shard ? Select(selection) : AllCases()) {
        list += fmt::format("{:<21} {:<20} {}\n", plan.name, plan.switches, plan.sentence);
    }
    return list;
}

/// Measured with the simulated DVR; most of it are the harness's own pauses.
int ExpectedSeconds(const Case& plan) {
    if (plan.fault) {
        return 5;  // with its recovery
    }
    if (Has(plan, 'z')) {
        return 4;
    }
    if (Has(plan, 'g')) {
        return 1;
    }
    const int whole = plan.protocol == 1 ? 6 : 10;
    return (Has(plan, 'c') ? 7 : whole) + (Has(plan, 's') ? 4 : 0) + static_cast<int>(SecondsAway(plan));
}

double SecondsAway(const Case& plan) {
    const std::size_t at = plan.switches.find("-d ");
    return at == std::string::npos ? 0 : 60 * std::stod(plan.switches.substr(at + 3));
}

bool Has(const Case& plan, char letter) {
    return (" " + plan.switches + " ").find(std::string(" -") + letter + " ") != std::string::npos;
}

}  // namespace rig::campaign
