#include "rig/campaign/evidence/CoveragePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "rig/base/Holds.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"

namespace rig::campaign {
namespace {

using html::AddLink;
using html::AddRowHead;
using html::AddTable;

/// @return the messages at which a fault acted in that dialect, as the table of faults has them
std::vector<std::string> MessagesOf(const std::vector<Coverage::FaultUse>& uses, int protocol) {
    std::vector<std::string> messages;
    for (const fault::FaultCase& one : fault::Cases()) {
        const bool isUsed =
            std::any_of(uses.begin(), uses.end(), [&one, protocol](const Coverage::FaultUse& use) {
                return use.protocol == protocol && use.message == one.message;
            });
        if (isUsed && !Holds(messages, one.message)) {
            messages.push_back(one.message);
        }
    }
    return messages;
}

/// How many cases saw the fault at each message, with a link to the first.
void AddFaultCells(pugi::xml_node row, const std::vector<Coverage::FaultUse>& uses,
                   const Coverage::FaultUse& first, const std::vector<std::string>& messages) {
    for (const std::string& message : messages) {
        pugi::xml_node cell = Add(row, "td");
        const auto use = std::find_if(uses.begin(), uses.end(), [&](const Coverage::FaultUse& one) {
            return one.fault == first.fault && one.protocol == first.protocol && one.message == message;
        });
        if (use != uses.end()) {
            AddLink(cell, "#" + use->cases.front(), std::to_string(use->cases.size()));
        }
    }
}

void AddFaults(pugi::xml_node main, const Coverage& coverage, int protocol) {
    const std::vector<Coverage::FaultUse> uses = coverage.Faults();
    const std::vector<std::string> messages = MessagesOf(uses, protocol);
    if (messages.empty()) {
        return;
    }
    std::vector<std::string> heads = {"Fault"};
    heads.insert(heads.end(), messages.begin(), messages.end());
    pugi::xml_node body =
        AddTable(main, fmt::format("Cases in which a fault acted at a message of {}.0", protocol), heads);
    Set(body.parent(), "class", "numbers");
    std::string last;
    for (const Coverage::FaultUse& use : uses) {
        if (use.protocol == protocol && use.fault != last) {
            pugi::xml_node row = Add(body, "tr");
            AddRowHead(row, use.fault);
            AddFaultCells(row, uses, use, messages);
            last = use.fault;
        }
    }
}

void AddItems(pugi::xml_node main, const Coverage& coverage) {
    pugi::xml_node body =
        AddTable(main, "Messages and fields that came", {"Message", "Field", "Dialect", "From", "Count"});
    Set(body.parent(), "class", "items");
    for (const Coverage::ItemCount& item : coverage.Items()) {
        pugi::xml_node row = Add(body, "tr");
        html::SetOutcome(row, item.count > 0 ? "reached" : "missed");
        AddRowHead(row, item.item.message);
        Add(row, "td", item.item.field);
        Add(row, "td", fmt::format("{}.0", item.item.protocol));
        Add(row, "td", item.item.from);
        Add(row, "td", std::to_string(item.count));
    }
    html::AddFilter(body, "items");
}

}  // namespace

void AddCoverage(pugi::xml_node main, const Coverage& coverage) {
    Set(Add(main, "h2", "Coverage"), "id", "coverage");
    const std::vector<std::string> unreached = coverage.Unreached();
    if (unreached.empty()) {
        Add(main, "p", "Every message and field of the protocol, every switch and every rule was exercised.");
    } else {
        Add(main, "p", "Reached by no case:");
        pugi::xml_node list = Add(main, "ul");
        for (const std::string& item : unreached) {
            Add(list, "li", item);
        }
    }
    AddFaults(main, coverage, 1);
    AddFaults(main, coverage, 2);
    AddItems(main, coverage);
}

}  // namespace rig::campaign
