#include "tests/rig/judge/VerdictsText.h"

#include <fmt/format.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "rig/judge/MessageList.h"

namespace {

using rig::result::RunResult;
using rig::result::Verdict;

std::string LinesOf(const rig::result::CheckResult& check) {
    std::string lines;
    for (const rig::result::Evidence& evidence : check.evidence) {
        lines += (lines.empty() ? ":" : ",") + std::to_string(evidence.line);
    }
    return lines;
}

}  // namespace

std::string Verdicts(const rig::result::Result& result, bool wantsPasses) {
    std::string text;
    for (const RunResult& run : result.runs) {
        text += fmt::format("{}{}, {} checks", text.empty() ? "" : " || ", run.switches, run.checks.size());
        for (const rig::result::CheckResult& check : run.checks) {
            if (check.verdict != Verdict::Pass) {
                text += fmt::format(", {} {}{}", *NameOf(check.verdict), check.id, LinesOf(check));
            } else if (wantsPasses) {
                text += fmt::format(", {}{}", check.id, LinesOf(check));
            }
        }
    }
    return text;
}

std::string Dialogue(const rig::result::Result& result) {
    static const std::map<rig::result::Step::Kind, const char*> kKinds = {
        {rig::result::Step::Kind::FromDvr, "DVR"},
        {rig::result::Step::Kind::FromHarness, "harness"},
        {rig::result::Step::Kind::Fault, "fault"},
        {rig::result::Step::Kind::Note, "note"}};
    std::string text;
    for (const RunResult& run : result.runs) {
        for (const rig::result::Step& step : run.steps) {
            text += fmt::format("{}{} {} {}", text.empty() ? "" : "; ", step.line, kKinds.at(step.kind),
                                step.text);
        }
    }
    return text;
}

std::string Times(const rig::result::Result& result) {
    std::string text;
    for (const RunResult& run : result.runs) {
        text += fmt::format("{} s", rig::result::SecondsSince(run.begin, run.end));
        for (const rig::result::Timing& timing : run.timings) {
            text += fmt::format(", {} {}: {} {} {} {} ms", timing.count, timing.request, timing.median,
                                timing.percentile95, timing.percentile99, timing.longest);
        }
    }
    return text;
}

std::string Messages(const std::string& log) {
    std::ostringstream printed;
    rig::judge::MessageList list(printed);
    std::istringstream lines(log);
    std::uint64_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        list.Add(++number, line);
    }
    list.Finish();
    std::string text;
    std::istringstream messages(printed.str());
    for (std::string line; std::getline(messages, line);) {
        auto message = nlohmann::json::parse(line);
        if (message.contains("text")) {
            message["text"] = message["text"].get<std::string>().size() / 2;
        }
        text += message.dump();
    }
    return text;
}
