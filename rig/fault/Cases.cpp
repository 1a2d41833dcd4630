#include "rig/fault/Cases.h"

#include <fmt/format.h>

#include <cctype>
#include <sstream>
#include <stdexcept>

#include "rig/base/Affix.h"
#include "rig/base/Holds.h"
#include "rig/base/Printable.h"

namespace rig::fault {
namespace {

void AddCases(std::vector<FaultCase>& all, const Fault& fault, int dialect) {
    const std::vector<std::string> values =
        fault.values.empty() ? std::vector<std::string>{""} : fault.values;
    for (const std::string& message : MessagesOf(fault, dialect)) {
        for (const std::string& value : values) {
            all.push_back({&fault, value, message, dialect});
        }
    }
}

/// The request for a file is what DVRs spend their time with; 2.0 is the richer dialect.
bool IsQuick(const FaultCase& one, int only) {
    const Fault& fault = *one.fault;
    const int dialect = only != 0 ? only : IsOf(fault, 2) ? 2 : 1;
    const std::vector<std::string> messages = MessagesOf(fault, dialect);
    return one.dialect == dialect &&
           one.message == (Holds(messages, "GET_FILE") ? "GET_FILE" : messages.front()) &&
           (fault.values.empty() || one.value == fault.values.front());
}

bool IsNamed(const FaultCase& one, const std::string& name, int dialect) {
    return name == "all" || name == one.Id() || name == one.fault->name || name == one.fault->group ||
           (name == "quick" && IsQuick(one, dialect));
}

}  // namespace

std::string FaultCase::Id() const {
    return fmt::format("{}@{}-{}.0", Named(), message, dialect);
}

std::string FaultCase::Named() const {
    return fault->name + (value.empty() ? "" : "=" + value);
}

std::string FaultCase::Sentence() const {
    std::string does = fault->does;
    does[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(does[0])));
    return fmt::format("{}{}: {}.", message == kCall ? "The call" : message,
                       value.empty() ? "" : fmt::format(" ({})", value), does);
}

const std::vector<FaultCase>& Cases() {
    static const std::vector<FaultCase> kCases = [] {
        std::vector<FaultCase> all;
        for (const Fault& fault : Faults()) {
            for (const int dialect : {1, 2}) {
                AddCases(all, fault, dialect);
            }
        }
        return all;
    }();
    return kCases;
}

std::vector<FaultCase> Choose(const std::string& selection, int dialect) {
    std::vector<bool> isChosen(Cases().size());
    std::vector<FaultCase> owns;
    std::istringstream names(selection + ",");  // so that nothing is an empty name
    for (std::string name; std::getline(names, name, ',');) {
        bool isKnown = false;
        for (std::size_t at = 0; at < Cases().size(); ++at) {
            if (IsNamed(Cases()[at], name, dialect)) {
                isKnown = true;
                isChosen[at] = isChosen[at] || dialect == 0 || Cases()[at].dialect == dialect;
            }
        }
        if (const std::optional<FaultCase> own = isKnown ? std::nullopt : CaseNamed(name)) {
            isKnown = true;
            if (dialect == 0 || own->dialect == dialect) {
                owns.push_back(*own);
            }
        }
        if (!isKnown) {
            throw std::runtime_error(
                fmt::format("--faults: expected quick, all, or groups, faults and cases "
                            "that --list-cases gives, found {}",
                            Quoted(name)));
        }
    }
    std::vector<FaultCase> chosen;
    for (std::size_t at = 0; at < Cases().size(); ++at) {
        if (isChosen[at]) {
            chosen.push_back(Cases()[at]);
        }
    }
    chosen.insert(chosen.end(), owns.begin(), owns.end());
    return chosen;
}

std::optional<FaultCase> CaseNamed(const std::string& id) {
    const std::size_t at = id.find('@');
    const std::size_t dash = id.rfind('-');
    if (at == std::string::npos || dash == std::string::npos || dash < at) {
        return std::nullopt;
    }
    const std::string named = id.substr(0, at);
    const std::size_t equals = named.find('=');
    const Fault* const fault = Find(named.substr(0, equals));
    if (fault == nullptr) {
        return std::nullopt;
    }
    FaultCase one{fault, equals == std::string::npos ? "" : named.substr(equals + 1),
                  id.substr(at + 1, dash - at - 1), EndsWith(id, "-1.0") ? 1 : 2};
    const bool isRight = Takes(*fault, one.value) && Holds(MessagesOf(*fault, one.dialect), one.message);
    return isRight && one.Id() == id ? std::optional<FaultCase>(one) : std::nullopt;
}

}  // namespace rig::fault
