#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstring>

#include "rig/base/Holds.h"
#include "rig/fault/FaultTables.h"
#include "rig/protocol/Catalogue.h"

namespace rig::fault {
namespace {

using protocol::Sender;

bool IsNumber(const std::string& text) {
    return !text.empty() && text.size() <= 9 && text.find_first_not_of("0123456789") == std::string::npos;
}

/// An order is no part of an export.
bool IsOrder(const char* name) {
    return std::strncmp(name, "UPDATE_", std::strlen("UPDATE_")) == 0;
}

std::string Join(const std::vector<std::string>& words) {
    return fmt::format("{}", fmt::join(words, ", "));
}

const char* DialectsOf(const Fault& fault) {
    return IsOf(fault, 1) && IsOf(fault, 2) ? "1.0, 2.0" : IsOf(fault, 1) ? "1.0" : "2.0";
}

}  // namespace

const std::vector<Fault>& Faults() {
    static const std::vector<Fault> kFaults = [] {
        std::vector<Fault> all;
        for (const auto* table : {&NetworkFaults(), &PieceFaults(), &FramingFaults(), &ShapeFaults(),
                                  &MarkupFaults(), &DialogueFaults(), &ValueFaults()}) {
            all.insert(all.end(), table->begin(), table->end());
        }
        return all;
    }();
    return kFaults;
}

const Fault* Find(std::string_view name) {
    const std::vector<Fault>& all = Faults();
    const auto found =
        std::find_if(all.begin(), all.end(), [name](const Fault& fault) { return fault.name == name; });
    return found == all.end() ? nullptr : &*found;
}

bool Takes(const Fault& fault, const std::string& value) {
    if (fault.values.empty()) {
        return value.empty();
    }
    return Holds(fault.values, value) || (IsNumber(fault.values.front()) && IsNumber(value));
}

bool IsOf(const Fault& fault, int dialect) {
    return std::strchr(fault.dialects, '0' + dialect) != nullptr;
}

std::vector<std::string> MessagesOf(const Fault& fault, int dialect) {
    std::vector<std::string> messages;
    if (!IsOf(fault, dialect)) {
        return messages;
    }
    if (Holds(fault.messages, kCall)) {
        messages.emplace_back(kCall);
    }
    for (const protocol::MessageKind& kind : protocol::Catalogue()) {
        const bool isSent = kind.dialect == dialect && kind.sender == Sender::Harness && !IsOrder(kind.name);
        if (isSent && (fault.messages.empty() || Holds(fault.messages, kind.name))) {
            messages.emplace_back(kind.name);
        }
    }
    return messages;
}

const char* NameOf(Duty duty) {
    switch (duty) {
        case Duty::GoesOn:
            return "goes on";
        case Duty::Refuses:
            return "refuses";
        case Duty::Survives:
            break;
    }
    return "survives";
}

Listing ListFaults() {
    Listing listing{{"fault", "group", "dialect", "acts on", "what the backend does", "a good DVR"}, {}};
    for (const Fault& fault : Faults()) {
        const std::string values = Join(fault.values);
        listing.rows.push_back(
            {fault.name + (values.empty() ? "" : "[=VALUE]"), fault.group, DialectsOf(fault),
             (fault.messages.empty() ? "any" : Join(fault.messages)) + (fault.always ? ", each" : ""),
             fault.does + (values.empty() ? "" : "; VALUE: " + values), NameOf(fault.duty)});
    }
    return listing;
}

}  // namespace rig::fault
