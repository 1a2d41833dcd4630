#include "rig/result/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <ostream>
#include <sstream>

#include "rig/base/Counted.h"
#include "rig/base/Terminal.h"

namespace rig::result {
namespace {

using Text = fmt::memory_buffer;

constexpr std::size_t kRunsAcross = 16;  // in one matrix: what fits a terminal's width

template <typename... Arguments>
void Print(Text& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
}

Colour ColourOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::Pass:
            return Colour::Green;
        case Verdict::Fail:
        case Verdict::Environment:
            return Colour::Red;
        default:
            return Colour::Yellow;
    }
}

std::string Shown(Verdict verdict, std::size_t width, bool colour) {
    std::string name = NameOf(verdict);
    name.resize(std::max(width, name.size()), ' ');
    return Coloured(name, colour ? ColourOf(verdict) : Colour::Plain);
}

void PrintCheck(Text& text, const CheckResult& check, bool colour) {
    Print(text, "\n{} {}\n", Shown(check.verdict, 0, colour), check.id);
    Print(text, "  {}\n  expected: {}\n  found:    {}\n", check.requirement, check.expected, check.found);
    for (const Evidence& line : check.evidence) {
        Print(text, "  {}\n", line.Words());
    }
}

std::string TitleOf(const RunResult& run) {
    return run.name + (run.switches.empty() ? "" : "  velloran " + run.switches);
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
    Print(text, "{}\n", TitleOf(run));
    for (const CheckResult& check : run.checks) {  // most of what is printed: appended, not formatted
        text.append(std::string_view("  "));
        text.append(Shown(check.verdict, 13, colour));
        text.append(std::string_view("  "));
        text.append(check.id);
        text.push_back('\n');
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

void RunPrinter::Add(const RunResult& run) {
    Text text;
    PrintRun(text, run, colour_);
    out_.write(text.data(), static_cast<std::streamsize>(text.size()));
    Row row{TitleOf(run), std::string(ids_.size(), ' ')};
    for (const CheckResult& check : run.checks) {
        const auto id = std::find(ids_.begin(), ids_.end(), check.id);
        const auto column = static_cast<std::size_t>(id - ids_.begin());
        if (id == ids_.end()) {
            ids_.push_back(check.id);
            row.letters += ' ';
        }
        row.letters[column] = LetterOf(check.verdict);
        ++counts_[check.verdict];
    }
    rows_.push_back(std::move(row));
    worst_ = std::max(worst_, WorstOf(run));
}

void RunPrinter::PrintMatrix(std::size_t first, std::size_t end) {
    Text text;
    for (std::size_t run = first; run < end; ++run) {
        Print(text, "{:>4}  {}\n", run + 1, rows_[run].title);
    }
    Print(text, "\n{:<28}", "check \\ run");
    for (std::size_t run = first; run < end; ++run) {
        Print(text, "{:>4}", run + 1);
    }
    for (std::size_t check = 0; check < ids_.size(); ++check) {
        Print(text, "\n{:<28}", ids_[check]);
        for (std::size_t run = first; run < end; ++run) {
            const std::string& letters = rows_[run].letters;
            Print(text, "{:>4}", check < letters.size() ? letters[check] : ' ');
        }
    }
    Print(text, "\n\n");
    out_.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void RunPrinter::End() {
    for (std::size_t first = 0; rows_.size() > 1 && first < rows_.size(); first += kRunsAcross) {
        PrintMatrix(first, std::min(first + kRunsAcross, rows_.size()));
    }
    if (rows_.size() > 1) {
        out_
            << ". pass, W warning, F fail, I inconclusive, N not reached, E environment, K known failure\n\n";
    }
    std::size_t checks = 0;
    for (const auto& [verdict, count] : counts_) {
        checks += count;
    }
    out_ << fmt::format(
        "{}: {}, {}, {} passed, {} failed, {} inconclusive, {} not reached, {} environment, {} known",
        Shown(worst_, 0, colour_), Counted(rows_.size(), "run"), Counted(checks, "check"),
        counts_[Verdict::Pass], counts_[Verdict::Fail], counts_[Verdict::Inconclusive],
        counts_[Verdict::NotReached], counts_[Verdict::Environment], counts_[Verdict::KnownFailure]);
    const std::size_t warnings = counts_[Verdict::Warning];
    out_ << (warnings == 0 ? "" : ", " + Counted(warnings, "warning")) << "\n";
}

std::string TextReport(const Result& result, bool colour) {
    std::ostringstream text;
    RunPrinter printer(text, colour);
    for (const RunResult& run : result.runs) {
        printer.Add(run);
    }
    printer.End();
    return text.str();
}

std::string Timeline(const RunResult& run) {
    Text text;
    Print(text, "{}\n", TitleOf(run));
    for (const Step& step : run.steps) {
        const double seconds =
            step.time && run.begin ? static_cast<double>(*step.time - *run.begin) / 1e6 : 0;
        Print(text, "{:>10.3f}  {}{}\n", seconds, ArrowOf(step.kind), step.text);
    }
    Print(text, "\n");
    return fmt::to_string(text);
}

}  // namespace rig::result
