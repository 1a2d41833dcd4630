#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "rig/base/Counted.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/evidence/CoveragePage.h"
#include "rig/campaign/evidence/MergePage.h"
#include "rig/html/HtmlPage.h"
#include "rig/result/Result.h"

namespace rig::campaign {
namespace {

using html::AddFact;
using html::AddLink;
using html::AddNamedCell;
using html::AddRowHead;
using html::AddTable;

constexpr std::size_t kMostColumns = 100;

std::string Headline(const CampaignRecord& campaign) {
    if (campaign.state == "running") {
        return "The campaign is still running, or was killed";
    }
    const auto passed = static_cast<std::size_t>(
        std::count_if(campaign.cases.begin(), campaign.cases.end(),
                      [](const CaseRecord& record) { return record.outcome == Outcome::Pass; }));
    const std::string share = fmt::format("{} of {} passed", passed, Counted(campaign.cases.size(), "case"));
    const bool isListTheOnlyFault =
        std::all_of(campaign.cases.begin(), campaign.cases.end(),
                    [](const CaseRecord& record) { return ExitStatusOf(record.outcome) == 0; });
    if (isListTheOnlyFault && !campaign.knownUnseen.empty()) {
        return "The list of known failures must be fixed: " + share;
    }
    switch (campaign.Whole()) {
        case Outcome::Pass:
            return "The DVR passed: " + share;
        case Outcome::KnownFailure:
            return "The DVR failed only in known ways: " + share;
        case Outcome::Fail:
            return "The DVR failed: " + share;
        case Outcome::Timeout:
            return "The DVR ran out of time: " + share;
        case Outcome::Environment:
            return "The harness, a hook or the rig failed: " + share;
        case Outcome::Interrupted:
            return "The campaign was interrupted: " + share;
        default:
            return "The campaign cannot tell whether the DVR behaved: " + share;
    }
}

/// Outcomes that are not verdicts look like the nearest verdict.
std::string ClassOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::Pass:
            return html::ClassOf(result::Verdict::Pass);
        case Outcome::KnownFailure:
            return html::ClassOf(result::Verdict::KnownFailure);
        case Outcome::Fail:
        case Outcome::Timeout:
            return html::ClassOf(result::Verdict::Fail);
        case Outcome::Environment:
        case Outcome::Interrupted:
            return html::ClassOf(result::Verdict::Environment);
        case Outcome::NotReached:
        case Outcome::NotRun:
        case Outcome::Running:
            return html::ClassOf(result::Verdict::NotReached);
        default:
            return html::ClassOf(result::Verdict::Inconclusive);
    }
}

void AddOutcome(pugi::xml_node parent, Outcome outcome) {
    Add(parent, "span", NameOf(outcome), "verdict " + ClassOf(outcome));
}

void AddFacts(pugi::xml_node main, const CampaignRecord& campaign) {
    pugi::xml_node list = Add(main, "dl", {}, "facts");
    AddFact(list, "Note", campaign.note);
    if (campaign.shard) {
        AddFact(list, "Shard",
                fmt::format("{} ({}), of a campaign of {}", campaign.shard->part.Words(),
                            campaign.shard->part.from, Counted(campaign.shard->cases.size(), "case")));
    }
    AddFact(list, "Begin", result::Date(campaign.begin));
    AddFact(list, "End", campaign.end ? result::Date(*campaign.end) : "not yet");
    const CaseTimes times = campaign.Times();
    AddFact(list, "Time",
            fmt::format("{:.1f} s in cases: {:.1f} s the harness's own pauses, {:.1f} s waiting for the DVR, "
                        "{:.1f} s watching whether it stays away, {:.1f} s overhead; "
                        "besides, {:.1f} s for port 5001, {:.1f} s in hooks",
                        times.duration, times.pauses, times.dvr, times.lingered, times.overhead, times.waited,
                        times.hooks));
    for (const auto& [name, version] : campaign.versions) {
        AddFact(list, name, version);
    }
    for (const auto& [name, command] : campaign.commands) {
        AddFact(list, "Command: " + name, command);
    }
    AddFact(list, "Called as", fmt::format("{}", fmt::join(campaign.commandLine, " ")));
    AddFact(list, "Seed", campaign.HasOneSeed() ? std::to_string(campaign.seed) : "");
}

void AddEnding(pugi::xml_node cell, const char* who, const ProcessRecord& process) {
    const std::string stopped = process.stoppedBy.empty() ? "" : " on " + process.stoppedBy;
    Add(cell, "div",
        fmt::format("{} {}{}", who, process.end ? process.end->Words() : "did not end", stopped));
}

void AddCase(pugi::xml_node body, const CaseRecord& record, std::size_t number) {
    pugi::xml_node row = Add(body, "tr");
    Set(row, "id", record.id);
    AddRowHead(row, std::to_string(number));
    AddOutcome(AddNamedCell(row, "Outcome"), record.outcome);
    pugi::xml_node name = AddNamedCell(row, "Case");
    Add(name, "strong", record.id);
    Add(name, "div", "velloran " + record.plan.switches);
    Add(name, "div", record.plan.sentence);
    pugi::xml_node found = AddNamedCell(row, "Found", record.reason);
    if (record.isSuspect && record.outcome != Outcome::Pass) {
        Add(found, "div", "The clean export before it failed: do not blame how the DVR handles faults.");
    }
    AddEnding(found, "harness", record.harness);
    if (record.dvr) {
        AddEnding(found, "DVR", *record.dvr);
    }
    AddNamedCell(row, "Duration", fmt::format("{:.1f} s", record.times.duration));
    pugi::xml_node files = AddNamedCell(row, "Evidence");
    for (const std::string& file : record.files) {
        AddLink(files, record.Folder() + "/" + file, file);
        AddText(files, " ");
    }
}

void AddCases(pugi::xml_node main, const CampaignRecord& campaign) {
    Set(Add(main, "h2", "Cases"), "id", "cases");
    pugi::xml_node body = AddTable(main, "In the order in which they ran",
                                   {"Number", "Outcome", "Case", "Found", "Duration", "Evidence"});
    Set(body.parent(), "class", "checks");
    for (std::size_t index = 0; index < campaign.cases.size(); ++index) {
        AddCase(body, campaign.cases[index], index + 1);
    }
}

/// @return the checks of these cases, in order of first appearance
std::vector<std::string> ChecksOf(const std::vector<const CaseRecord*>& cases) {
    std::vector<std::string> ids;
    for (const CaseRecord* record : cases) {
        for (const result::CheckResult& check : record->checks) {
            if (std::find(ids.begin(), ids.end(), check.id) == ids.end()) {
                ids.push_back(check.id);
            }
        }
    }
    return ids;
}

void AddCell(pugi::xml_node row, const CaseRecord& record, const std::string& id) {
    pugi::xml_node cell = Add(row, "td");
    const auto check = std::find_if(record.checks.begin(), record.checks.end(),
                                    [&id](const result::CheckResult& one) { return one.id == id; });
    if (check != record.checks.end()) {
        const bool hasPage =
            std::find(record.files.begin(), record.files.end(), "report.html") != record.files.end();
        html::AddVerdictLetter(cell, check->verdict,
                               hasPage ? record.Folder() + "/report.html#" + id : "#" + record.id);
    }
}

/// @return the cases to show side by side: of more than anybody can read only the first that did not pass
std::vector<const CaseRecord*> ColumnsOf(const CampaignRecord& campaign) {
    std::vector<const CaseRecord*> columns;
    for (const CaseRecord& record : campaign.cases) {
        const bool isWanted = campaign.cases.size() <= kMostColumns ||
                              (ExitStatusOf(record.outcome) != 0 && !record.checks.empty());
        if (isWanted && columns.size() < kMostColumns) {
            columns.push_back(&record);
        }
    }
    return columns;
}

void AddMatrix(pugi::xml_node main, const CampaignRecord& campaign) {
    const std::vector<const CaseRecord*> columns = ColumnsOf(campaign);
    Set(Add(main, "h2", "Checks by case"), "id", "matrix");
    if (columns.size() < campaign.cases.size()) {
        Add(main, "p", fmt::format("The first {} cases that did not pass.", kMostColumns));
    }
    std::vector<std::string> heads = {"Check"};
    for (const CaseRecord* column : columns) {
        heads.push_back(std::to_string(column - campaign.cases.data() + 1));
    }
    pugi::xml_node body = AddTable(main, "Each cell leads to the case's dialogue and log", heads);
    Set(body.parent(), "class", "matrix");
    for (const std::string& id : ChecksOf(columns)) {
        pugi::xml_node row = Add(body, "tr");
        AddRowHead(row, id);
        for (const CaseRecord* column : columns) {
            AddCell(row, *column, id);
        }
    }
    html::AddLetterLegend(main);
}

void AddSpreads(pugi::xml_node main, const CampaignRecord& campaign) {
    const std::vector<Spread> spreads = campaign.Spreads();
    if (spreads.empty()) {
        return;
    }
    Set(Add(main, "h2", "Spread"), "id", "spread");
    pugi::xml_node body = AddTable(main, "Reaction of the DVR in ms over all runs of a case",
                                   {"Case", "Request", "Lowest median", "Highest median", "Longest"});
    Set(body.parent(), "class", "numbers");
    for (const Spread& spread : spreads) {
        for (const Spread::Reaction& reaction : spread.reactions) {
            pugi::xml_node row = Add(body, "tr");
            AddRowHead(row, spread.name);
            Add(row, "td", reaction.request);
            for (const double time : {reaction.least, reaction.most, reaction.longest}) {
                Add(row, "td", fmt::format("{:.1f}", time));
            }
        }
    }
}

}  // namespace

std::string CampaignPage(const CampaignRecord& campaign) {
    html::HtmlPage page(Headline(campaign));
    pugi::xml_node main = page.Body();
    if (campaign.merged) {
        AddDifferences(main, *campaign.merged);
    }
    for (const std::string& known : campaign.knownUnseen) {
        Add(main, "p",
            "A known failure did not occur: " + known + ". The list of known failures must be fixed.");
    }
    AddFacts(main, campaign);
    pugi::xml_node sections = Add(main, "nav");
    Set(sections, "aria-label", "Sections");
    for (const auto& [target, title] : {std::pair("#cases", "Cases"), std::pair("#matrix", "Checks by case"),
                                        std::pair("#coverage", "Coverage")}) {
        AddLink(sections, target, title);
        AddText(sections, " ");
    }
    if (campaign.merged) {
        AddParts(main, *campaign.merged);
    }
    AddCases(main, campaign);
    AddMatrix(main, campaign);
    AddSpreads(main, campaign);
    AddCoverage(main, campaign.coverage);
    return page.Text();
}

}  // namespace rig::campaign
