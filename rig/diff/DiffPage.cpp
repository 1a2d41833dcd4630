#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "rig/diff/Reports.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"
#include "rig/html/RelativeLink.h"

namespace rig::diff {
namespace {

using html::AddFact;
using html::AddLink;
using html::AddNamedCell;
using html::AddRowHead;
using html::AddTable;

constexpr Change kWorstFirst[] = {Change::Worse, Change::Better, Change::Changed, Change::Same};

html::Tally TallyOf(const Comparison& comparison) {
    html::Tally tally;
    for (const Change change : kWorstFirst) {
        tally[NameOf(change)] = comparison.Count(change);
    }
    return tally;
}

/// @return the first kind of change that there is
Change WholeOf(const Comparison& comparison) {
    return *std::find_if(std::begin(kWorstFirst), std::end(kWorstFirst) - 1,
                         [&comparison](Change change) { return comparison.Count(change) > 0; });
}

void AddEvidence(pugi::xml_node cell, const std::string& place, const char* name, const Campaign& campaign,
                 const Case* one) {
    if (!one) {
        return;
    }
    for (const CaseRun& run : one->runs) {
        const std::string target = campaign.folder + "/" + run.folder + (run.hasPage ? "/report.html" : "/");
        AddLink(cell, html::RelativeLink(target, place), name);
        AddText(cell, " ");
    }
}

void AddDifference(pugi::xml_node cell, const Difference& difference) {
    pugi::xml_node item = Add(cell, "div");
    html::AddOutcome(item, NameOf(difference.change));
    AddText(item, " ");
    Add(item, "strong", difference.subject);
    Add(item, "div", "before: " + difference.before);
    Add(item, "div", "now: " + difference.after);
}

void AddCase(pugi::xml_node body, const CaseComparison& one, const Comparison& comparison,
             const std::string& place) {
    pugi::xml_node row = Add(body, "tr");
    html::SetOutcome(row, NameOf(one.change));
    AddRowHead(row, one.name);
    html::AddOutcome(AddNamedCell(row, "Change"), NameOf(one.change));
    Add(AddNamedCell(row, "Switches"), "code", "velloran " + one.switches);
    pugi::xml_node cell = AddNamedCell(row, "What changed");
    for (const Difference& difference : one.differences) {
        AddDifference(cell, difference);
    }
    pugi::xml_node evidence = AddNamedCell(row, "Evidence");
    AddEvidence(evidence, place, "before", *comparison.before, one.before);
    AddEvidence(evidence, place, "now", *comparison.after, one.after);
}

}  // namespace

std::string DiffPage(const Comparison& comparison, const std::string& place) {
    html::HtmlPage page("Two campaigns: " + comparison.Words());
    page.SetOutcome(NameOf(WholeOf(comparison)));
    html::AddTally(page.Body(), TallyOf(comparison));
    pugi::xml_node list = Add(page.Body(), "dl", {}, "facts");
    AddFact(list, "Before", Words(*comparison.before));
    AddFact(list, "Now", Words(*comparison.after));
    for (const Difference& difference : comparison.surroundings) {
        AddFact(list, difference.subject, difference.before + ", now " + difference.after);
    }
    pugi::xml_node body = AddTable(page.Body(), "Cases that got worse first",
                                   {"Case", "Change", "Switches", "What changed", "Evidence"});
    Set(body.parent(), "class", "checks changes");
    for (const Change change : kWorstFirst) {
        for (const CaseComparison& one : comparison.cases) {
            if (one.change == change) {
                AddCase(body, one, comparison, place);
            }
        }
    }
    html::AddFilter(body, "cases");
    return page.Text();
}

}  // namespace rig::diff
