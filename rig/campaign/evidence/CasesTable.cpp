#include "rig/campaign/evidence/CasesTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"

namespace rig::campaign {
namespace {

void AddEnding(pugi::xml_node cell, const char* who, const ProcessRecord& process) {
    const std::string stopped = process.stoppedBy.empty() ? "" : " on " + process.stoppedBy;
    Add(cell, "div", fmt::format("{} {}{}", who, process.end ? process.end->Words() : "did not end", stopped),
        "hint");
}

void AddFound(pugi::xml_node cell, const CaseRecord& record) {
    if (record.isSuspect && record.outcome != Outcome::Pass) {
        Add(cell, "div", "The clean export before it failed: do not blame how the DVR handles faults.");
    }
    if (record.end) {
        AddEnding(cell, "harness", record.harness);
    }
    if (record.end && record.dvr) {
        AddEnding(cell, "DVR", *record.dvr);
    }
}

/// Adds links to the case's files, the page first.
void AddFiles(pugi::xml_node cell, const CaseRecord& record) {
    std::vector<std::string> files = record.files;
    std::stable_partition(files.begin(), files.end(),
                          [](const std::string& file) { return file == "report.html"; });
    Set(cell, "class", "files");
    for (const std::string& file : files) {
        html::AddLink(cell, record.Folder() + "/" + file, file);
        AddText(cell, " ");
    }
}

void AddCase(pugi::xml_node body, const CaseRecord& record, std::size_t number) {
    pugi::xml_node row = Add(body, "tr");
    Set(row, "id", record.id);
    html::SetOutcome(row, NameOf(record.outcome));
    html::AddRowHead(row, std::to_string(number));
    html::AddOutcome(html::AddNamedCell(row, "Outcome"), NameOf(record.outcome));
    pugi::xml_node name = html::AddNamedCell(row, "Case");
    Set(name, "class", "case");
    Add(name, "strong", record.id);
    Add(Add(name, "div"), "code", "velloran " + record.plan.switches);
    Add(name, "div", record.plan.sentence, "hint");
    AddFound(html::AddNamedCell(row, "Found", record.reason), record);
    Set(html::AddNamedCell(row, "Duration",
                           record.end ? fmt::format("{:.1f} s", record.times.duration) : std::string()),
        "class", "number");
    AddFiles(html::AddNamedCell(row, "Evidence"), record);
}

}  // namespace

void AddCases(pugi::xml_node main, const CampaignRecord& campaign) {
    Set(Add(main, "h2", "Cases"), "id", "cases");
    pugi::xml_node body = html::AddTable(main, "In the order in which they ran",
                                         {"Number", "Outcome", "Case", "Found", "Duration", "Evidence"});
    Set(body.parent(), "class", "checks cases");
    for (std::size_t index = 0; index < campaign.cases.size(); ++index) {
        AddCase(body, campaign.cases[index], index + 1);
    }
    html::AddFilter(body, "cases");
}

}  // namespace rig::campaign
