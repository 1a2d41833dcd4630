#include "rig/result/TextReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <sstream>

#include "rig/base/Append.h"
#include "rig/base/Counted.h"
#include "rig/base/Terminal.h"

namespace rig::result {
namespace {

constexpr std::size_t kRunsAcross = 16;  // in one matrix: what fits a terminal's width

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

void AppendPadded(std::string& text, std::string_view column, std::size_t width) {
    text.append(column);
    text.append(width - std::min(width, column.size()), ' ');
}

void AppendRight(std::string& text, std::string_view column, std::size_t width) {
    text.append(width - std::min(width, column.size()), ' ');
    text.append(column);
}

void PrintCheck(std::string& text, const CheckResult& check, bool colour) {
    Append(text, "\n{} {}\n", Shown(check.verdict, 0, colour), check.id);
    Append(text, "  {}\n  expected: {}\n  found:    {}\n", check.requirement, check.expected, check.found);
    for (const Evidence& line : check.evidence) {
        Append(text, "  {}\n", line.Words());
    }
}

std::string TitleOf(const RunResult& run) {
    return run.name + (run.switches.empty() ? "" : "  velloran " + run.switches);
}

void AppendNumber(std::string& text, std::uint64_t number, std::size_t width) {
    const fmt::format_int digits(number);
    std::array<char, 24> cell;  // any number fits
    cell.fill(' ');
    std::copy(digits.data(), digits.data() + digits.size(), cell.end() - digits.size());
    const std::size_t size = std::max(width, digits.size());
    text.append(cell.end() - size, size);
}

/// Appends a time with one decimal. To round it by its binary digits takes long, and decides only halfway.
void AppendTime(std::string& text, double time) {
    constexpr double kMost = 1e9;
    constexpr double kDoubt = 1e-5;
    constexpr std::size_t kWidth = 10;
    const double tenths = time >= 0 && time < kMost ? time * 10 : 0.5;
    const auto whole = static_cast<std::int64_t>(tenths);
    const double rest = tenths - static_cast<double>(whole);
    if (std::abs(rest - 0.5) > kDoubt) {
        const std::int64_t rounded = whole + (rest > 0.5 ? 1 : 0);
        AppendNumber(text, static_cast<std::uint64_t>(rounded / 10), kWidth - 2);
        text += '.';
        text += static_cast<char>('0' + rounded % 10);
        return;
    }
    std::array<char, 400> digits;  // any number fits
    const auto* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), time, std::chars_format::fixed, 1).ptr;
    AppendRight(text, {digits.data(), static_cast<std::size_t>(end - digits.data())}, kWidth);
}

void PrintTimings(std::string& text, const RunResult& run) {
    if (run.timings.empty()) {
        return;
    }
    std::size_t width = 22;
    for (const Timing& timing : run.timings) {
        width = std::max(width, timing.request.size() + 1);
    }
    text += "\n  ";
    AppendPadded(text, "request", width);
    text += "  count    median      95 %      99 %   longest  (reaction of the DVR, ms)\n";
    for (const Timing& timing : run.timings) {
        text += "  ";
        AppendPadded(text, timing.request, width);
        AppendNumber(text, timing.count, 7);
        for (const double time : {timing.median, timing.percentile95, timing.percentile99, timing.longest}) {
            AppendTime(text, time);
        }
        text += '\n';
    }
}

std::size_t IndexOf(Verdict verdict) {
    return static_cast<std::size_t>(verdict);
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

std::string RunPrinter::RowOf(Verdict verdict, std::string_view id) const {
    return fmt::format("  {}  {}\n", Shown(verdict, 13, colour_), id);
}

void RunPrinter::Add(const RunResult& run) {
    Row row{TitleOf(run), std::string(columns_.size(), ' ')};
    text_.clear();
    text_ += row.title;
    text_ += '\n';
    std::size_t expected = 0;
    for (const CheckResult& check : run.checks) {
        const std::size_t column = ColumnOf(check.id, expected);
        expected = column + 1;
        if (check.verdict == Verdict::Pass) {
            text_ += columns_[column].passRow;
        } else {
            text_ += RowOf(check.verdict, check.id);
        }
        row.letters.resize(columns_.size(), ' ');
        row.letters[column] = LetterOf(check.verdict);
        ++counts_[IndexOf(check.verdict)];
    }
    PrintTimings(text_, run);
    for (const CheckResult& check : run.checks) {
        if (NeedsWords(check.verdict)) {
            PrintCheck(text_, check, colour_);
        }
    }
    text_ += '\n';
    out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    rows_.push_back(std::move(row));
    worst_ = std::max(worst_, WorstOf(run));
}

/// @param expected  where it probably is or comes before: runs have much the same checks in the same order
/// @return the check's column in the matrix; a new one if it has none
std::size_t RunPrinter::ColumnOf(std::string_view id, std::size_t expected) {
    const auto start = columns_.begin() + static_cast<std::ptrdiff_t>(expected);
    auto found = std::find_if(start, columns_.end(), [id](const Column& column) {
        return column.id.data() == id.data();  // almost all are of one table
    });
    if (found == columns_.end()) {
        found = std::find_if(columns_.begin(), columns_.end(),
                             [id](const Column& column) { return column.id == id; });
    }
    if (found == columns_.end()) {
        found = columns_.insert(columns_.end(), {id, RowOf(Verdict::Pass, id)});
    }
    return static_cast<std::size_t>(found - columns_.begin());
}

void RunPrinter::PrintMatrix(std::size_t first, std::size_t end) {
    constexpr std::size_t kCell = 4;
    constexpr std::size_t kHead = 28;
    std::string text;
    for (std::size_t run = first; run < end; ++run) {
        AppendNumber(text, run + 1, kCell);
        text += "  ";
        text += rows_[run].title;
        text += '\n';
    }
    text += '\n';
    AppendPadded(text, "check \\ run", kHead);
    for (std::size_t run = first; run < end; ++run) {
        AppendNumber(text, run + 1, kCell);
    }
    for (std::size_t check = 0; check < columns_.size(); ++check) {
        text += '\n';
        AppendPadded(text, columns_[check].id, kHead);
        text.append((end - first) * kCell, ' ');
        for (std::size_t run = first; run < end; ++run) {
            const std::string& letters = rows_[run].letters;
            if (check < letters.size()) {
                text[text.size() - (end - run - 1) * kCell - 1] = letters[check];
            }
        }
    }
    text += "\n\n";
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
    for (const std::size_t count : counts_) {
        checks += count;
    }
    const auto count = [this](Verdict verdict) { return counts_[IndexOf(verdict)]; };
    out_ << fmt::format(
        "{}: {}, {}, {} passed, {} failed, {} inconclusive, {} not reached, {} environment, {} known",
        Shown(worst_, 0, colour_), Counted(rows_.size(), "run"), Counted(checks, "check"),
        count(Verdict::Pass), count(Verdict::Fail), count(Verdict::Inconclusive), count(Verdict::NotReached),
        count(Verdict::Environment), count(Verdict::KnownFailure));
    const std::size_t warnings = count(Verdict::Warning);
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
    std::string text;
    Append(text, "{}\n", TitleOf(run));
    for (const Step& step : run.steps) {
        const double seconds =
            step.time && run.begin ? static_cast<double>(*step.time - *run.begin) / 1e6 : 0;
        Append(text, "{:>10.3f}  {}{}\n", seconds, ArrowOf(step.kind), step.text);
    }
    Append(text, "\n");
    return text;
}

}  // namespace rig::result
