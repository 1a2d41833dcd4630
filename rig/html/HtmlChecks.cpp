#include <fmt/format.h>

#include <algorithm>

#include "rig/html/HtmlMatrix.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlSections.h"
#include "rig/html/HtmlTable.h"

namespace rig::html {
namespace {

void AddEvidence(pugi::xml_node cell, const result::CheckResult& check, const LogPlaces& places) {
    if (check.evidence.empty()) {
        return;
    }
    pugi::xml_node list = Add(cell, "ul", {}, "evidence");
    for (const result::Evidence& line : check.evidence) {
        pugi::xml_node item = Add(list, "li");
        const std::string place = fmt::format("{}:{}", line.file, line.line);
        if (const auto target = places.TargetOf(line)) {
            AddLink(item, *target, place);
        } else {
            AddText(item, place);
        }
        AddText(item, " ");
        Add(item, "code", line.text);
        AddText(item, line.note.empty() ? "" : " " + line.note);
    }
}

void AddCheck(pugi::xml_node body, const result::CheckResult& check, const LogPlaces& places,
              const std::string& prefix) {
    pugi::xml_node row = Add(body, "tr");
    const std::string id(check.id);
    Set(row, "id", prefix + id);
    SetOutcome(row, result::NameOf(check.verdict));
    AddVerdict(AddNamedCell(row, "Verdict"), check.verdict);
    AddLink(AddRowHead(row, {}), "#" + prefix + id, id);
    AddNamedCell(row, "Requirement", check.requirement);
    AddNamedCell(row, "Expected", check.expected);
    AddEvidence(AddNamedCell(row, "Found", check.found), check, places);
}

}  // namespace

std::string PrefixOf(std::size_t run) {
    return run == 0 ? "" : fmt::format("run{}-", run + 1);
}

void AddChecks(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
               const std::string& prefix) {
    std::vector<const result::CheckResult*> checks;
    checks.reserve(run.checks.size());
    for (const result::CheckResult& check : run.checks) {
        checks.push_back(&check);
    }
    std::stable_sort(checks.begin(), checks.end(),
                     [](const result::CheckResult* left, const result::CheckResult* right) {
                         return left->verdict > right->verdict;
                     });
    pugi::xml_node body = AddTable(section, "Checks, the worst first",
                                   {"Verdict", "Check", "Requirement", "Expected", "Found"});
    Set(body.parent(), "class", "checks");
    for (const result::CheckResult* check : checks) {
        AddCheck(body, *check, places, prefix);
    }
    AddFilter(body, prefix + "checks");
}

void AddTimings(pugi::xml_node section, const result::RunResult& run) {
    pugi::xml_node body = AddTable(section, "Reaction of the DVR in ms, net of the harness's own pauses",
                                   {"Request", "Count", "Median", "95 %", "99 %", "Longest"});
    Set(body.parent(), "class", "numbers");
    for (const result::Timing& timing : run.timings) {
        pugi::xml_node row = Add(body, "tr");
        AddRowHead(row, timing.request);
        Add(row, "td", std::to_string(timing.count));
        for (const double time : {timing.median, timing.percentile95, timing.percentile99, timing.longest}) {
            Add(row, "td", fmt::format("{:.1f}", time));
        }
    }
}

void AddMatrix(pugi::xml_node section, const result::Result& result) {
    std::vector<MatrixColumn> columns;
    for (const result::RunResult& run : result.runs) {
        const std::size_t number = columns.size();
        columns.push_back({std::to_string(number + 1), &run.checks, "#" + PrefixOf(number)});
    }
    AddCheckMatrix(section, "Checks by run", columns);
}

}  // namespace rig::html
