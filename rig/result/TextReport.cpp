#include "rig/result/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <sstream>

#include "rig/base/Counted.h"
#include "rig/base/Terminal.h"
#include "rig/base/TextBuffer.h"

namespace rig::result {
namespace {

constexpr std::size_t kUsualRun = 4'096;  // bytes
constexpr std::size_t kRunsAcross = 16;   // in one matrix: what fits a terminal's width

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

// Most of what is printed are rows of checks and times: appended, not formatted.

constexpr std::string_view kBlanks = "                            ";

void AppendPadded(TextBuffer& text, std::string_view column, std::size_t width) {
    text.append(column);
    text.append(kBlanks.substr(0, width - std::min(width, column.size())));
}

void AppendRight(TextBuffer& text, std::string_view column, std::size_t width) {
    text.append(kBlanks.substr(0, width - std::min(width, column.size())));
    text.append(column);
}

void AppendRow(TextBuffer& text, const CheckResult& check, bool colour) {
    constexpr std::size_t kWidth = 13;
    text.append(std::string_view("  "));
    if (colour) {
        text.append(Shown(check.verdict, kWidth, true));
    } else {
        AppendPadded(text, NameOf(check.verdict), kWidth);
    }
    text.append(std::string_view("  "));
    text.append(check.id);
    text.push_back('\n');
}

void PrintCheck(TextBuffer& text, const CheckResult& check, bool colour) {
    Append(text, "\n{} {}\n", Shown(check.verdict, 0, colour), check.id);
    Append(text, "  {}\n  expected: {}\n  found:    {}\n", check.requirement, check.expected, check.found);
    for (const Evidence& line : check.evidence) {
        Append(text, "  {}\n", line.Words());
    }
}

std::string TitleOf(const RunResult& run) {
    return run.name + (run.switches.empty() ? "" : "  velloran " + run.switches);
}

/// Appends a time with one decimal. To round it by its binary digits takes long, and decides only halfway.
void AppendTime(TextBuffer& text, double time) {
    constexpr double kMost = 1e9;
    constexpr double kDoubt = 1e-5;
    constexpr std::size_t kWidth = 10;
    const double tenths = time >= 0 && time < kMost ? time * 10 : 0.5;
    const auto whole = static_cast<std::int64_t>(tenths);
    const double rest = tenths - static_cast<double>(whole);
    if (std::abs(rest - 0.5) > kDoubt) {
        const std::int64_t rounded = whole + (rest > 0.5 ? 1 : 0);
        const fmt::format_int digits(rounded / 10);
        AppendRight(text, {digits.data(), digits.size()}, kWidth - 2);
        text.push_back('.');
        text.push_back(static_cast<char>('0' + rounded % 10));
        return;
    }
    std::array<char, 400> digits;  // any number fits
    const auto* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), time, std::chars_format::fixed, 1).ptr;
    AppendRight(text, {digits.data(), static_cast<std::size_t>(end - digits.data())}, kWidth);
}

void PrintTimings(TextBuffer& text, const RunResult& run) {
    if (run.timings.empty()) {
        return;
    }
    std::size_t width = 22;
    for (const Timing& timing : run.timings) {
        width = std::max(width, timing.request.size() + 1);
    }
    text.append(std::string_view("\n  "));
    AppendPadded(text, "request", width);
    text.append(
        std::string_view("  count    median      95 %      99 %   longest  (reaction of the DVR, ms)\n"));
    for (const Timing& timing : run.timings) {
        text.append(std::string_view("  "));
        AppendPadded(text, timing.request, width);
        const fmt::format_int count(timing.count);
        AppendRight(text, {count.data(), count.size()}, 7);
        for (const double time : {timing.median, timing.percentile95, timing.percentile99, timing.longest}) {
            AppendTime(text, time);
        }
        text.push_back('\n');
    }
}

void PrintRun(TextBuffer& text, const RunResult& run, bool colour) {
    Append(text, "{}\n", TitleOf(run));
    for (const CheckResult& check : run.checks) {
        AppendRow(text, check, colour);
    }
    PrintTimings(text, run);
    for (const CheckResult& check : run.checks) {
        if (NeedsWords(check.verdict)) {
            PrintCheck(text, check, colour);
        }
    }
    Append(text, "\n");
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
    TextBuffer text;
    text.reserve(kUsualRun);
    PrintRun(text, run, colour_);
    out_.write(text.data(), static_cast<std::streamsize>(text.size()));
    Row row{TitleOf(run), std::string(ids_.size(), ' ')};
    std::size_t expected = 0;
    for (const CheckResult& check : run.checks) {
        const std::size_t column = ColumnOf(check.id, expected);
        expected = column + 1;
        row.letters.resize(ids_.size(), ' ');
        row.letters[column] = LetterOf(check.verdict);
        ++counts_[check.verdict];
    }
    rows_.push_back(std::move(row));
    worst_ = std::max(worst_, WorstOf(run));
}

/// @param expected  where it probably is or comes before: runs have much the same checks in the same order
/// @return the check's column in the matrix; a new one if it has none
std::size_t RunPrinter::ColumnOf(const std::string& id, std::size_t expected) {
    const auto start = ids_.begin() + static_cast<std::ptrdiff_t>(expected);
    auto found = std::find(start, ids_.end(), id);
    if (found == ids_.end()) {
        found = std::find(ids_.begin(), start, id);
        found = found == start ? ids_.insert(ids_.end(), id) : found;
    }
    return static_cast<std::size_t>(found - ids_.begin());
}

void RunPrinter::PrintMatrix(std::size_t first, std::size_t end) {
    constexpr std::size_t kCell = 4;
    TextBuffer text;
    for (std::size_t run = first; run < end; ++run) {
        Append(text, "{:>4}  {}\n", run + 1, rows_[run].title);
    }
    Append(text, "\n{:<28}", "check \\ run");
    for (std::size_t run = first; run < end; ++run) {
        Append(text, "{:>4}", run + 1);
    }
    for (std::size_t check = 0; check < ids_.size(); ++check) {
        text.push_back('\n');
        AppendPadded(text, ids_[check], 28);
        std::string cells((end - first) * kCell, ' ');
        for (std::size_t run = first; run < end; ++run) {
            const std::string& letters = rows_[run].letters;
            cells[(run - first) * kCell + kCell - 1] = check < letters.size() ? letters[check] : ' ';
        }
        text.append(cells);
    }
    Append(text, "\n\n");
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
    TextBuffer text;
    Append(text, "{}\n", TitleOf(run));
    for (const Step& step : run.steps) {
        const double seconds =
            step.time && run.begin ? static_cast<double>(*step.time - *run.begin) / 1e6 : 0;
        Append(text, "{:>10.3f}  {}{}\n", seconds, ArrowOf(step.kind), step.text);
    }
    Append(text, "\n");
    return fmt::to_string(text);
}

}  // namespace rig::result
