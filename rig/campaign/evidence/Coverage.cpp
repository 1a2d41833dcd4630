#include "rig/campaign/evidence/Coverage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "rig/base/Affix.h"
#include "rig/judge/checks/Checks.h"
#include "rig/protocol/Catalogue.h"

namespace rig::campaign {
namespace {

using result::Verdict;

std::string WordsOf(int protocol, std::string_view from, std::string_view message, std::string_view field) {
    return fmt::format("{}.0 {}: {}{}{}", protocol, from, message, field.empty() ? "" : " ", field);
}

std::string WordsOf(const ProtocolItem& item) {
    return WordsOf(item.protocol, item.from, item.message, item.field);
}

bool Passed(const result::RunResult& run, const std::string& id) {
    return std::any_of(run.checks.begin(), run.checks.end(), [&id](const result::CheckResult& check) {
        return check.id == id && check.verdict == Verdict::Pass;
    });
}

bool IsDecided(const result::CheckResult& check) {
    return check.verdict == Verdict::Pass || check.verdict == Verdict::Warning ||
           check.verdict == Verdict::Fail || check.verdict == Verdict::KnownFailure;
}

template <typename List, typename IsReached>
std::string Share(const List& list, IsReached isReached) {
    return fmt::format("{} of {}", std::count_if(list.begin(), list.end(), isReached), list.size());
}

/// @return "xfer" of "xfer.answer"
std::string KindOf(const std::string& rule) {
    return rule.substr(0, rule.find('.'));
}

/// A case may have several runs.
void AddOnce(std::vector<std::string>& cases, const std::string& name) {
    if (std::find(cases.begin(), cases.end(), name) == cases.end()) {
        cases.push_back(name);
    }
}

/// @return the fault with message and dialect, whatever its value
std::string PlaceOf(const fault::FaultCase& one) {
    return fault::FaultCase{one.fault, "", one.message, one.dialect}.Id();
}

bool IsOrder(std::string_view message) {
    return StartsWith(message, "UPDATE_");
}

/// @return whether the harness brings it about without any of its switches
bool IsOfPlainExport(const ProtocolItem& item) {
    const std::string_view message = item.message;
    if (std::string_view(item.from) == NameOf(protocol::Sender::Harness)) {
        return !IsOrder(message) && item.field.empty();
    }
    const auto& kinds = protocol::Catalogue();
    return message == "OK" || std::any_of(kinds.begin(), kinds.end(), [&](const protocol::MessageKind& kind) {
               return kind.dialect == item.protocol && kind.sender == protocol::Sender::Harness &&
                      !IsOrder(kind.name) && !kind.answers.empty() && kind.answers.front() == message;
           });
}

bool IsUsed(const Coverage::Use& use) {
    return !use.cases.empty();
}

}  // namespace

void Coverage::Add(const Case& plan, const result::RunResult& run, const std::vector<DvrMessage>& messages) {
    protocols_.insert(plan.protocol);
    for (const DvrMessage& message : messages) {
        Count(plan.protocol, "DVR", message.name, "");
        for (const std::string& field : message.fields) {
            Count(plan.protocol, "DVR", message.name, field);
        }
    }
    CountRequests(plan, run);
    for (const SwitchItem& item : SwitchItems()) {
        const bool hasFired = std::any_of(item.checks.begin(), item.checks.end(),
                                          [&run](const std::string& id) { return Passed(run, id); });
        if (hasFired) {
            AddOnce(fired_[std::string("-") + item.letter], plan.name);
        }
    }
    if (plan.fault) {
        std::vector<std::string>& cases = faults_[PlaceOf(*plan.fault)];
        if (Passed(run, "fault.acted")) {
            AddOnce(cases, plan.name);
        }
    }
    for (const result::CheckResult& check : run.checks) {
        met_.emplace(check.id);
        if (IsDecided(check)) {
            AddOnce(rules_[std::string(check.id)], plan.name);
        }
    }
}

/// The requests are in the judge's ladder; their optional fields follow from the injected faults.
void Coverage::CountRequests(const Case& plan, const result::RunResult& run) {
    for (const result::Step& step : run.steps) {
        if (step.kind != result::Step::Kind::FromHarness) {
            continue;
        }
        const std::string name = step.text.substr(0, step.text.find(' '));
        Count(plan.protocol, "harness", name, "");
        if (name == "DONE" && Has(plan, 'd')) {
            Count(plan.protocol, "harness", name, "duration");
        }
    }
    if (Passed(run, "rehash.fired")) {
        Count(plan.protocol, "harness", "GET_FILE", "rehash");
    }
}

void Coverage::Count(int protocol, const std::string& from, const std::string& message,
                     const std::string& field) {
    ++counts_[WordsOf(protocol, from, message, field)];
}

std::vector<Coverage::ItemCount> Coverage::Items() const {
    std::vector<ItemCount> items;
    for (const ProtocolItem& item : ProtocolItems()) {
        if (protocols_.count(item.protocol) > 0) {
            const auto found = counts_.find(WordsOf(item));
            items.push_back({item, found == counts_.end() ? 0 : found->second});
        }
    }
    return items;
}

std::vector<Coverage::Use> Coverage::Switches() const {
    std::vector<Use> uses;
    for (const SwitchItem& item : SwitchItems()) {
        if (!item.isFirstDialect && protocols_.count(2) == 0) {
            continue;
        }
        const std::string name = std::string("-") + item.letter;
        const auto found = fired_.find(name);
        uses.push_back({name, found == fired_.end() ? std::vector<std::string>() : found->second});
    }
    return uses;
}

std::vector<Coverage::Use> Coverage::Rules() const {
    std::vector<Use> uses;
    for (const judge::Check& check : judge::AllChecks()) {
        const auto found = rules_.find(check.id);
        if (judge::IsOptional(check) && found == rules_.end()) {
            continue;  // nobody asked for it
        }
        uses.push_back({check.id, found == rules_.end() ? std::vector<std::string>() : found->second});
    }
    return uses;
}

std::vector<Coverage::FaultUse> Coverage::Faults() const {
    std::vector<FaultUse> uses;
    for (const fault::FaultCase& one : fault::Cases()) {
        const auto found = faults_.find(PlaceOf(one));
        const bool isNew = uses.empty() || uses.back().fault != one.fault->name ||
                           uses.back().message != one.message || uses.back().protocol != one.dialect;
        if (isNew && found != faults_.end() && !found->second.empty()) {
            uses.push_back({one.dialect, one.message, one.fault->name, found->second});
        }
    }
    return uses;
}

void Coverage::AddSwitches(std::vector<std::string>& unreached) const {
    for (const Use& use : Switches()) {
        if (!IsUsed(use) && !HasFaults()) {
            unreached.push_back("switch " + use.name);
        }
    }
}

/// @return whether it counts as not reached
bool Coverage::IsMissed(const ItemCount& item) const {
    return item.count == 0 && (!HasFaults() || IsOfPlainExport(item.item));
}

/// @return the rules that count as not reached
std::vector<Coverage::Use> Coverage::Missed() const {
    std::vector<Use> missed;
    for (Use& use : Rules()) {
        if (!IsUsed(use) && (!HasFaults() || met_.count(use.name) > 0)) {
            missed.push_back(std::move(use));
        }
    }
    return missed;
}

std::vector<std::string> Coverage::Unreached() const {
    std::vector<std::string> unreached;
    for (const ItemCount& item : Items()) {
        if (IsMissed(item)) {
            unreached.push_back(WordsOf(item.item));
        }
    }
    AddSwitches(unreached);
    for (const Use& use : Missed()) {
        unreached.push_back("rule " + use.name);
    }
    return unreached;
}

/// For people: leaves out the fields of a message that never came, and uses one word for all rules of a kind.
std::vector<std::string> Coverage::UnreachedInShort() const {
    std::vector<std::string> unreached;
    for (const ItemCount& item : Items()) {
        const bool isField = item.item.field[0] != '\0';
        const std::string message = WordsOf(item.item.protocol, item.item.from, item.item.message, "");
        if (IsMissed(item) && (!isField || counts_.count(message) > 0)) {
            unreached.push_back(WordsOf(item.item));
        }
    }
    AddSwitches(unreached);
    std::map<std::string, bool> kinds;  // whether some rule of the kind was reached
    for (const Use& use : Rules()) {
        kinds[KindOf(use.name)] = kinds[KindOf(use.name)] || IsUsed(use);
    }
    for (const Use& use : Missed()) {
        unreached.push_back("rule " + (kinds[KindOf(use.name)] ? use.name : KindOf(use.name) + ".*"));
    }
    unreached.erase(std::unique(unreached.begin(), unreached.end()), unreached.end());
    return unreached;
}

std::string Coverage::Text() const {
    if (protocols_.empty()) {
        return "";
    }
    const std::vector<ItemCount> items = Items();
    std::string text = fmt::format("coverage: {} messages and fields, ",
                                   Share(items, [](const ItemCount& item) { return item.count > 0; }));
    if (HasFaults()) {
        text += fmt::format("{} pairs of fault and message\n",
                            Share(faults_, [](const auto& one) { return !one.second.empty(); }));
    } else {
        text += fmt::format("{} switches, {} rules\n", Share(Switches(), IsUsed), Share(Rules(), IsUsed));
    }
    const std::vector<std::string> unreached = UnreachedInShort();
    return unreached.empty() ? text
                             : text + fmt::format("reached by no case: {}\n", fmt::join(unreached, ", "));
}

}  // namespace rig::campaign
