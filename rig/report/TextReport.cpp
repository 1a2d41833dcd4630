#include "rig/report/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>

namespace rig::report {
namespace {

using Text = fmt::memory_buffer;

template <typename... Arguments>
void Print(Text& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
}

const char* ColourOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return "\x1b[32m";
        case Verdict::Fail:
        case Verdict::Environment:
            return "\x1b[31m";
        default:
            return "\x1b[33m";
    }
}

std::string Shown(Verdict verdict, int width, bool colour) {
    const std::string name = fmt::format("{:<{}}", NameOf(verdict), width);
    return colour ? ColourOf(verdict) + name + "\x1b[0m" : name;
}

void PrintCheck(Text& text, const CheckResult& check, bool colour) {
    Print(text, "\n{} {}\n", Shown(check.verdict, 0, colour), check.id);
    Print(text, "  {}\n  expected: {}\n  found:    {}\n", check.requirement, check.expected, check.found);
    for (const Evidence& line : check.evidence) {
        Print(text, "  {}:{}: {}\n", line.file, line.line, line.text);
    }
}

bool NeedsWords(const CheckResult& check) {
    return check.verdict != Verdict::Pass && check.verdict != Verdict::NotReached;
}

void PrintTimings(Text& text, const RunResult& run) {
    if (run.timings.empty()) {
        return;
    }
    Print(text, "\n  {:<22}{:>7}{:>10}{:>10}{:>10}{:>10}  (reaction of the DVR, ms)\n", "request", "count",
          "median", "95 %", "99 %", "longest");
    for (const Timing& timing : run.timings) {
        Print(text, "  {:<22}{:>7}{:>10.1f}{:>10.1f}{:>10.1f}{:>10.1f}\n", timing.request, timing.count,
              timing.median, timing.percentile95, timing.percentile99, timing.longest);
    }
}

void PrintRun(Text& text, const RunResult& run, bool colour) {
    Print(text, "{}  velloran {}\n", run.name, run.switches);
    for (const CheckResult& check : run.checks) {
        Print(text, "  {}  {}\n", Shown(check.verdict, 13, colour), check.id);
    }
    PrintTimings(text, run);
    for (const CheckResult& check : run.checks) {
        if (NeedsWords(check)) {
            PrintCheck(text, check, colour);
        }
    }
    Print(text, "\n");
}

char LetterOf(Verdict verdict) {
    return verdict == Verdict::Pass ? '.' : *NameOf(verdict);
}

void PrintMatrix(Text& text, const Result& result) {
    std::vector<std::string> ids;
    for (const RunResult& run : result.runs) {
        for (const CheckResult& check : run.checks) {
            if (std::find(ids.begin(), ids.end(), check.id) == ids.end()) {
                ids.push_back(check.id);
            }
        }
    }
    for (std::size_t run = 0; run < result.runs.size(); ++run) {
        Print(text, "{:>4}  {}  velloran {}\n", run + 1, result.runs[run].name, result.runs[run].switches);
    }
    Print(text, "\n{:<28}", "check \\ run");
    for (std::size_t run = 0; run < result.runs.size(); ++run) {
        Print(text, "{:>4}", run + 1);
    }
    for (const std::string& id : ids) {
        Print(text, "\n{:<28}", id);
        for (const RunResult& run : result.runs) {
            const auto check = std::find_if(run.checks.begin(), run.checks.end(),
                                            [&id](const CheckResult& one) { return one.id == id; });
            Print(text, "{:>4}", check == run.checks.end() ? ' ' : LetterOf(check->verdict));
        }
    }
    Print(text, "\n\n. pass, F fail, I inconclusive, N not reached, E environment, K known failure\n\n");
}

void PrintClosing(Text& text, const Result& result, bool colour) {
    std::map<Verdict, std::size_t> counts;
    std::size_t checks = 0;
    for (const RunResult& run : result.runs) {
        checks += run.checks.size();
        for (const CheckResult& check : run.checks) {
            ++counts[check.verdict];
        }
    }
    Print(text,
          "{}: {} {}, {} checks, {} passed, {} failed, {} inconclusive, {} not reached, {} environment\n",
          Shown(WorstOf(result), 0, colour), result.runs.size(), result.runs.size() == 1 ? "run" : "runs",
          checks, counts[Verdict::Pass], counts[Verdict::Fail], counts[Verdict::Inconclusive],
          counts[Verdict::NotReached], counts[Verdict::Environment]);
}

const char* ArrowOf(Step::Kind kind) {
    switch (kind) {
        case Step::Kind::FromDvr:
            return "DVR -->         ";
        case Step::Kind::FromHarness:
            return "    <-- harness ";
        case Step::Kind::Fault:
            return "    !!! fault   ";
        case Step::Kind::Note:
            break;
    }
    return "    ---         ";
}

}  // namespace

std::string TextReport(const Result& result, bool colour) {
    Text text;
    if (result.runs.size() > 1) {
        PrintMatrix(text, result);
    }
    for (const RunResult& run : result.runs) {
        PrintRun(text, run, colour);
    }
    PrintClosing(text, result, colour);
    return fmt::to_string(text);
}

std::string Timeline(const Result& result) {
    Text text;
    for (const RunResult& run : result.runs) {
        Print(text, "{}  velloran {}\n", run.name, run.switches);
        for (const Step& step : run.steps) {
            const double seconds =
                step.time && run.begin ? static_cast<double>(*step.time - *run.begin) / 1e6 : 0;
            Print(text, "{:>10.3f}  {}{}\n", seconds, ArrowOf(step.kind), step.text);
        }
        Print(text, "\n");
    }
    return fmt::to_string(text);
}

}  // namespace rig::report
