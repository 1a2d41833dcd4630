#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "rig/base/Counted.h"
#include "rig/base/Holds.h"
#include "rig/campaign/evidence/CampaignFiles.h"
#include "rig/campaign/evidence/CasesTable.h"
#include "rig/campaign/evidence/CoveragePage.h"
#include "rig/campaign/evidence/MergePage.h"
#include "rig/html/HtmlMatrix.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"
#include "rig/result/Result.h"

namespace rig::campaign {
namespace {

using html::AddFact;
using html::AddLink;
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

/// @return how many cases had each outcome; of the two that everybody looks for, also that there are none
html::Tally TallyOf(const CampaignRecord& campaign) {
    html::Tally tally = {{NameOf(Outcome::Pass), 0}, {NameOf(Outcome::Fail), 0}};
    for (const CaseRecord& record : campaign.cases) {
        ++tally[NameOf(record.outcome)];
    }
    return tally;
}

std::string Progress(const CampaignRecord& campaign) {
    std::size_t done = 0;
    std::string current;
    for (const CaseRecord& record : campaign.cases) {
        done += record.outcome == Outcome::NotRun || record.outcome == Outcome::Running ? 0U : 1U;
        if (record.outcome == Outcome::Running && record.begin) {
            current = fmt::format("; {} began at {}", record.id, result::Date(*record.begin));
        }
    }
    return fmt::format("{} of {} done{}.", done, Counted(campaign.cases.size(), "case"), current);
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

html::MatrixColumn ColumnOf(const CaseRecord& record, std::size_t number) {
    const bool hasPage = Holds(record.files, "report.html");
    return {std::to_string(number), &record.checks,
            hasPage ? record.Folder() + "/report.html#" : "#" + record.id, hasPage};
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
    std::vector<html::MatrixColumn> letters;
    letters.reserve(columns.size());
    for (const CaseRecord* column : columns) {
        letters.push_back(ColumnOf(*column, static_cast<std::size_t>(column - campaign.cases.data()) + 1));
    }
    html::AddCheckMatrix(main, "Each letter leads to the case's dialogue and log", letters);
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
    const bool isRunning = campaign.state == "running" && !campaign.merged;
    page.SetOutcome(NameOf(isRunning ? Outcome::Running : campaign.Whole()));
    if (campaign.merged) {
        AddDifferences(main, *campaign.merged);
    }
    for (const std::string& known : campaign.knownUnseen) {
        Add(main, "p",
            "A known failure did not occur: " + known + ". The list of known failures must be fixed.",
            "notice");
    }
    html::AddTally(main, TallyOf(campaign));
    if (isRunning) {
        page.Renew(Progress(campaign));
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
