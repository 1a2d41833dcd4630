#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Counted.h"
#include "rig/history/PageSections.h"
#include "rig/history/Reports.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlTable.h"
#include "rig/html/RelativeLink.h"

namespace rig::history {
namespace {

constexpr std::size_t kColumns = 24;  // that fit on a page of 1200 pixels

std::string TitleOf(const History& history, const Cell& cell) {
    const CaseDigest& digest = cell.digest;
    const std::string runs = digest.outcomes.size() > 1
                                 ? fmt::format(" in {} of {} runs", digest.worstCount, digest.outcomes.size())
                                 : "";
    return fmt::format("{}{}: {} in {}", *digest.worst, runs, *digest.name, Words(history, cell.build));
}

void AddCell(pugi::xml_node row, const History& history, const Cell& cell, const std::string& place) {
    const std::string target = EvidenceOf(history, cell.build, cell.digest.folder, cell.digest.hasPage);
    const std::string title = TitleOf(history, cell);
    pugi::xml_node link = html::AddLink(Add(row, "td"), html::RelativeLink(target, place),
                                        std::string(1, LetterOf(*cell.digest.worst)));
    Set(link, "class", std::string("letter verdict ") + html::LookOf(*cell.digest.worst).cssClass);
    Set(link, "title", title);
    Set(link, "aria-label", title);
}

void AddCaseRow(pugi::xml_node body, const History& history, const CaseCourse& one, std::size_t first,
                std::size_t last, const std::string& place) {
    pugi::xml_node row = Add(body, "tr");
    Set(html::AddRowHead(row, *one.name), "title", "velloran " + *one.switches);
    auto cell = std::find_if(one.cells.begin(), one.cells.end(),
                             [first](const Cell& other) { return other.build >= first; });
    for (std::size_t build = first; build < last; ++build) {
        if (cell != one.cells.end() && cell->build == build) {
            AddCell(row, history, *cell, place);
            ++cell;
        } else {
            Add(row, "td");
        }
    }
}

/// Adds number and name of each campaign above its column.
void AddBuildHeads(pugi::xml_node table, const History& history, std::size_t first, std::size_t last) {
    pugi::xml_node head = table.child("thead").child("tr").child("th").next_sibling("th");
    for (std::size_t build = first; build < last; ++build) {
        const Build& one = history.builds[build];
        Set(head, "class", "build");
        Set(head, "title", one.Name() + (one.Remarks().empty() ? "" : ", " + one.Remarks()));
        AddBuildLink(head, history, build, std::to_string(build + 1));
        Add(head, "br");
        Add(head, "span", one.Name());
        head = head.next_sibling("th");
    }
}

void AddPiece(pugi::xml_node main, const History& history, std::size_t first, std::size_t last,
              const std::string& place) {
    std::vector<std::string> heads(last - first + 1);
    heads[0] = "Case";
    pugi::xml_node body = html::AddTable(main, fmt::format("Campaigns {} to {}", first + 1, last), heads);
    Set(body.parent(), "class", "matrix");
    AddBuildHeads(body.parent(), history, first, last);
    for (const CaseCourse* const one : history.CasesToShow()) {
        AddCaseRow(body, history, *one, first, last, place);
    }
}

}  // namespace

void AddMatrix(pugi::xml_node main, const History& history, const std::string& place) {
    Set(Add(main, "h2", "Cases by campaign"), "id", "matrix");
    Add(main, "p", LetterLegend(history) + ". Each letter leads to the evidence of its case.", "hint");
    const std::size_t hidden = history.cases.size() - history.CasesToShow().size();
    if (hidden > 0) {
        Add(main, "p", fmt::format("Left out here: {} that always passed.", Counted(hidden, "case")), "cut");
    }
    for (std::size_t last = history.builds.size(); last > 0;) {
        const std::size_t first = (last - 1) / kColumns * kColumns;
        AddPiece(main, history, first, last, place);
        last = first;
    }
}

}  // namespace rig::history
