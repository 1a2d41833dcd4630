#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string>

#include "rig/diff/Severity.h"
#include "rig/history/PageSections.h"
#include "rig/history/Reports.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"
#include "rig/html/RelativeLink.h"

namespace rig::history {
namespace {

using html::AddFact;
using html::AddNamedCell;
using html::AddRowHead;
using html::AddTable;

std::string AnchorOf(std::size_t build) {
    return fmt::format("campaign-{}", build + 1);
}

/// @return how a case came out when it last ran
const std::string& LastOutcome(const CaseCourse& one) {
    const auto cell = std::find_if(one.cells.rbegin(), one.cells.rend(), [](const Cell& other) {
        return *other.digest.worst != "NOT RUN" && *other.digest.worst != "RUNNING";
    });
    return *(cell == one.cells.rend() ? one.cells.back() : *cell).digest.worst;
}

/// Shows how each case came out when it last ran, and whether a check still fails.
void AddOutcomes(html::HtmlPage& page, const History& history) {
    html::Tally tally;
    std::string worst = history.failures.empty() ? "PASS" : "FAIL";
    for (const CaseCourse& one : history.cases) {
        const std::string& outcome = LastOutcome(one);
        worst = diff::Severity(outcome) > diff::Severity(worst) ? outcome : worst;
        ++tally[outcome];
    }
    page.SetOutcome(worst);
    html::AddTally(page.Body(), tally);
}

void AddSummary(pugi::xml_node main, const History& history) {
    pugi::xml_node list = Add(main, "dl", {}, "facts");
    AddFact(list, "In order of", history.order == Order::Time ? "time" : "note");
    AddFact(list, "From", Words(history, 0));
    AddFact(list, "To", Words(history, history.builds.size() - 1));
    for (const LeftOut& one : history.leftOut) {
        AddFact(list, "Left out", one.folder + ": " + one.reason);
    }
    pugi::xml_node sections = Add(main, "nav");
    Set(sections, "aria-label", "Sections");
    for (const auto& [target, title] :
         {std::pair("#failures", "Failures"), std::pair("#unsteady", "Unsteady cases"),
          std::pair("#matrix", "Cases by campaign"), std::pair("#reactions", "Reaction times"),
          std::pair("#campaigns", "Campaigns")}) {
        html::AddLink(sections, target, title);
        AddText(sections, " ");
    }
}

void AddFailure(pugi::xml_node body, const History& history, const Failure& failure,
                const std::string& place) {
    pugi::xml_node row = Add(body, "tr");
    AddRowHead(row, *failure.check);
    AddBuildLink(AddNamedCell(row, "Since"), history, failure.since);
    pugi::xml_node passed = AddNamedCell(row, "Last passed");
    if (failure.passed) {
        AddBuildLink(passed, history, *failure.passed);
    } else {
        AddText(passed, "never before");
    }
    const std::string evidence =
        html::RelativeLink(EvidenceOf(history, failure.last, failure.folder, failure.hasPage), place);
    html::AddLink(AddNamedCell(row, "Last seen"), evidence + (failure.hasPage ? "#" + *failure.check : ""),
                  Words(history, failure.last));
    AddNamedCell(row, "Cases", Words(failure.cases));
    AddNamedCell(row, "Found", *failure.verdict + ": " + *failure.found);
}

void AddFailures(pugi::xml_node main, const History& history, const std::string& place) {
    Set(Add(main, "h2", "What fails now"), "id", "failures");
    if (history.failures.empty()) {
        Add(main, "p", "No check failed when it last came to a verdict.");
        return;
    }
    pugi::xml_node body =
        AddTable(main, "Checks that failed when they last came to a verdict, the latest failures first",
                 {"Check", "Since", "Last passed", "Last seen", "Cases", "Found"});
    Set(body.parent(), "class", "checks");
    for (const Failure& failure : history.failures) {
        AddFailure(body, history, failure, place);
    }
}

void AddUnsteady(pugi::xml_node main, const History& history) {
    Set(Add(main, "h2", "Unsteady cases"), "id", "unsteady");
    if (history.unsteady.empty()) {
        Add(main, "p", "No outcome changed between runs with the same note.");
        return;
    }
    pugi::xml_node body = AddTable(main, "Cases whose outcome changed between runs with the same note",
                                   {"Case", "From one run to the next", "Outcomes"});
    Set(body.parent(), "class", "checks");
    for (const UnsteadyCase& unsteady : history.unsteady) {
        pugi::xml_node row = Add(body, "tr");
        AddRowHead(row, *unsteady.name);
        AddNamedCell(row, "From one run to the next", Words(unsteady));
        pugi::xml_node outcomes = AddNamedCell(row, "Outcomes");
        for (const UnsteadyCase::Firmware& firmware : unsteady.firmwares) {
            Add(outcomes, "div", Words(firmware));
        }
    }
}

void AddBuilds(pugi::xml_node main, const History& history, const std::string& place) {
    Set(Add(main, "h2", "Campaigns"), "id", "campaigns");
    pugi::xml_node body =
        AddTable(main, history.order == Order::Time ? "In order of time" : "In order of their notes",
                 {"Number", "Note", "Begin", "Passed", "Folder", "Remarks"});
    Set(body.parent(), "class", "checks");
    for (std::size_t build = 0; build < history.builds.size(); ++build) {
        const Build& one = history.builds[build];
        pugi::xml_node row = Add(body, "tr");
        Set(row, "id", AnchorOf(build));
        AddRowHead(row, std::to_string(build + 1));
        AddNamedCell(row, "Note", one.facts.note);
        AddNamedCell(row, "Begin", result::Date(one.facts.begin));
        AddNamedCell(row, "Passed", fmt::format("{} of {}", one.passed, one.cases));
        html::AddLink(AddNamedCell(row, "Folder"),
                      html::RelativeLink(one.facts.folder + "/index.html", place), one.facts.folder);
        pugi::xml_node remarks = AddNamedCell(row, "Remarks", one.Remarks());
        if (!one.otherVersions.empty()) {
            Add(remarks, "div", fmt::format("not as before: {}", fmt::join(one.otherVersions, ", ")));
        }
    }
}

}  // namespace

void AddBuildLink(pugi::xml_node parent, const History& history, std::size_t build, const std::string& text) {
    html::AddLink(parent, "#" + AnchorOf(build), text.empty() ? Words(history, build) : text);
}

std::string EvidenceOf(const History& history, std::size_t build, const std::string& folder, bool hasPage) {
    return history.builds[build].facts.folder + "/" + folder + (hasPage ? "/report.html" : "/");
}

std::string HistoryPage(const History& history, const std::string& place) {
    html::HtmlPage page("History of " + history.Words());
    pugi::xml_node main = page.Body();
    AddOutcomes(page, history);
    AddSummary(main, history);
    AddFailures(main, history, place);
    AddUnsteady(main, history);
    AddMatrix(main, history, place);
    AddPlots(main, history);
    AddBuilds(main, history, place);
    return page.Text();
}

}  // namespace rig::history
