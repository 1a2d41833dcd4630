// A log of any bytes: the judge reaches a verdict, every report can be made from it, and the verdict is the
// same if the log was rotated in the middle and nothing of it is kept.
#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "rig/judge/Judge.h"
#include "rig/result/Reports.h"
#include "rig/result/TextReport.h"
#include "tests/fuzz/Demand.h"

namespace {

using rig::result::Verdict;

std::vector<std::string_view> LinesOf(std::string_view log) {
    std::vector<std::string_view> lines;
    while (!log.empty()) {
        const std::size_t end = std::min(log.find('\n'), log.size());
        lines.push_back(log.substr(0, end));
        log.remove_prefix(std::min(end + 1, log.size()));
    }
    return lines;
}

/// @param rotated  how many lines are in the first of two files
rig::result::Result Judged(const std::vector<std::string_view>& lines, std::size_t rotated, bool keep) {
    rig::result::Result result;
    rig::judge::Judge judge({3, 100.0}, {keep, keep},
                            [&result](rig::result::RunResult run) { result.runs.push_back(std::move(run)); });
    for (std::size_t line = 0; line < lines.size(); ++line) {
        judge.Add(line < rotated ? "first" : "second", line + 1, lines[line]);
    }
    judge.Finish();
    return result;
}

std::vector<Verdict> VerdictsOf(const rig::result::Result& result) {
    std::vector<Verdict> verdicts;
    for (const auto& run : result.runs) {
        for (const auto& check : run.checks) {
            verdicts.push_back(check.verdict);
        }
    }
    return verdicts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string_view> lines = LinesOf({reinterpret_cast<const char*>(data), size});
    const rig::result::Result result = Judged(lines, lines.size(), true);
    fuzz::Demand(VerdictsOf(result) == VerdictsOf(Judged(lines, lines.size() / 2, false)),
                 "the same verdicts on a rotated log");
    for (const auto& run : result.runs) {
        const bool isDone = std::any_of(run.checks.begin(), run.checks.end(), [](const auto& check) {
            return check.id == "log.whole" && check.verdict == Verdict::Pass;
        });
        fuzz::Demand(isDone || rig::result::WorstOf(run) != Verdict::Pass, "no pass of a log without end");
    }
    if (!result.runs.empty()) {
        rig::result::TextReport(result, true);
        rig::result::JsonReport(result);
        rig::result::JunitReport(result);
        rig::result::TapReport(result);
    }
    return 0;
}
