#include "rig/html/HtmlReport.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Counted.h"
#include "rig/html/HtmlOutcome.h"
#include "rig/html/HtmlPage.h"
#include "rig/html/HtmlSections.h"
#include "rig/html/HtmlTable.h"
#include "rig/result/Result.h"

namespace rig::html {
namespace {

// What a browser opens within seconds; many runs share it, but each gets a fair share.
constexpr std::size_t kLogLines = 100'000;
constexpr std::size_t kFewestLogLines = 1'000;
constexpr std::size_t kSteps = 10'000;
constexpr std::size_t kFewestSteps = 200;

Tally CountsOf(const result::Result& result) {
    Tally counts;
    for (const result::RunResult& run : result.runs) {
        for (const result::CheckResult& check : run.checks) {
            ++counts[result::NameOf(check.verdict)];
        }
    }
    return counts;
}

std::string Headline(const result::Result& result) {
    Tally counts = CountsOf(result);
    std::size_t sum = 0;
    for (const auto& [name, count] : counts) {
        sum += count;
    }
    const result::Verdict worst = result::WorstOf(result);
    const std::string share = fmt::format("{} of {}", counts[result::NameOf(worst)], Counted(sum, "check"));
    switch (worst) {
        case result::Verdict::Pass:
            return fmt::format("The DVR passed: {}", share);
        case result::Verdict::Warning:
            return fmt::format("The DVR passed, with warnings: {}", share);
        case result::Verdict::KnownFailure:
            return fmt::format("The DVR failed only in known ways: {}", share);
        case result::Verdict::NotReached:
            return fmt::format("The export did not get far enough: {} not reached", share);
        case result::Verdict::Inconclusive:
            return fmt::format("The log cannot tell whether the DVR behaved: {} inconclusive", share);
        case result::Verdict::Environment:
            return fmt::format("The harness or the rig failed, not the DVR: {}", share);
        case result::Verdict::Fail:
            break;
    }
    return fmt::format("The DVR failed: {}", share);
}

void AddFacts(pugi::xml_node section, const result::RunResult& run) {
    pugi::xml_node list = Add(section, "dl", {}, "facts");
    AddFact(list, "Run", run.name);
    AddFact(list, "Switches", "velloran " + run.switches);
    AddFact(list, "Begin", run.begin ? result::Date(*run.begin) : "not in the log");
    AddFact(list, "End", run.end ? result::Date(*run.end) : "not in the log");
    if (run.begin && run.end) {
        AddFact(list, "Duration", result::SecondsSince(run.begin, run.end) + " s");
    }
}

/// Adds a heading, and a link to it in the run's list of headings.
void AddHeading(pugi::xml_node section, pugi::xml_node headings, const char* heading,
                const std::string& anchor, const char* title) {
    AddLink(headings, "#" + anchor, title);
    AddText(headings, " ");
    Set(Add(section, heading, title), "id", anchor);
}

/// Adds everything about one run. @param heading the element of its headings
void AddRun(pugi::xml_node section, const result::RunResult& run, std::size_t number, std::size_t runs,
            const char* heading) {
    const std::string prefix = PrefixOf(number);
    const LogPlaces places(run, prefix, std::max(kFewestLogLines, kLogLines / runs));
    AddFacts(section, run);
    pugi::xml_node headings = Add(section, "nav");
    Set(headings, "aria-label", "Sections of " + run.name);
    AddHeading(section, headings, heading, prefix + "checks", "Checks");
    AddChecks(section, run, places, prefix);
    if (!run.timings.empty()) {
        AddHeading(section, headings, heading, prefix + "timing", "Timing");
        AddTimings(section, run);
    }
    if (!run.steps.empty()) {
        AddHeading(section, headings, heading, prefix + "dialogue", "Dialogue");
        AddLadder(section, run, places, std::max(kFewestSteps, kSteps / runs));
    }
    if (!run.log.empty()) {
        AddHeading(section, headings, heading, prefix + "log", "Log");
        AddLog(section, run, places, prefix);
    }
}

void AddListOfRuns(pugi::xml_node main, const result::Result& result) {
    pugi::xml_node body = AddTable(main, "Runs", {"Run", "Verdict", "Log", "Switches"});
    for (std::size_t number = 0; number < result.runs.size(); ++number) {
        const result::RunResult& run = result.runs[number];
        pugi::xml_node row = Add(body, "tr");
        AddLink(AddRowHead(row, {}), fmt::format("#run{}", number + 1), std::to_string(number + 1));
        AddVerdict(Add(row, "td"), result::WorstOf(run));
        Add(row, "td", run.name);
        Add(row, "td", "velloran " + run.switches);
    }
}

void AddRuns(pugi::xml_node main, const result::Result& result) {
    AddListOfRuns(main, result);
    AddMatrix(main, result);
    for (std::size_t number = 0; number < result.runs.size(); ++number) {
        const result::RunResult& run = result.runs[number];
        pugi::xml_node section = Add(main, "section");
        Set(section, "id", fmt::format("run{}", number + 1));
        pugi::xml_node heading = Add(section, "h2", fmt::format("Run {}: {} ", number + 1, run.name));
        AddVerdict(heading, result::WorstOf(run));
        AddRun(section, run, number, result.runs.size(), "h3");
    }
}

}  // namespace

std::string HtmlReport(const result::Result& result) {
    HtmlPage page(Headline(result));
    page.SetOutcome(result::NameOf(result::WorstOf(result)));
    AddTally(page.Body(), CountsOf(result));
    if (result.runs.size() == 1) {
        AddRun(page.Body(), result.runs.front(), 0, 1, "h2");
    } else {
        AddRuns(page.Body(), result);
    }
    return page.Text();
}

}  // namespace rig::html
