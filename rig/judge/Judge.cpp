#include "rig/judge/Judge.h"

#include <algorithm>

#include "rig/base/Affix.h"
#include "rig/judge/wire/WireInspection.h"

namespace rig::judge {
namespace {

/// The library's message on standard error: "velloran: FILE:LINE: FUNCTION: Assertion `...' failed."
bool IsAssertion(std::string_view line) {
    return line.find("velloran: ") != std::string_view::npos &&
           line.find(": Assertion `") != std::string_view::npos;
}

/// The library's message on standard error: "terminate called after throwing an instance of 'TYPE'", and
/// below it "  what():  TEXT".
bool IsException(std::string_view line) {
    return line.find("terminate called ") != std::string_view::npos || StartsWith(line, "  what():  ");
}

void AddTimings(const std::map<std::string, ReactionTimes>& reactions, const char* where,
                std::vector<result::Timing>& timings) {
    for (const auto& [request, times] : reactions) {
        timings.push_back({request + where, times.Count(), times.Percentile(0.5), times.Percentile(0.95),
                           times.Percentile(0.99), times.Longest()});
    }
}

result::RunResult Judged(const Run& run, const Limits& limits, bool words) {
    result::RunResult result;
    result.name = run.name;
    result.switches = run.Switches();
    result.begin = run.beginTime;
    result.end = run.endTime;
    result.checks = JudgeRun(run, limits, words);
    if (run.hasFractions) {
        AddTimings(run.reactions, "", result.timings);
    }
    result.steps = run.steps;
    if (run.wire) {
        AddTimings(run.wire->reactions, " on the wire", result.timings);
        AddFaults(*run.wire, result.steps);
    }
    result.log = run.log;
    return result;
}

}  // namespace

bool IsMarkerFailure(std::string_view line) {
    return StartsWith(line, "touch: ") && line.find("/mnt/hd/velloranFail") != std::string_view::npos;
}

Judge::Judge(const Limits& limits, const Keep& keep, TakeRun take)
    : limits_(limits), keep_(keep), take_(std::move(take)) {
    keep_.transfers = limits_.delivered.has_value();
    if (limits_.delivered && limits_.delivered->isLive) {
        Files shownLater;
        before_ = FilesIn(limits_.delivered->folder, shownLater);
    }
}

bool IsLastWord(std::string_view line) {
    return IsAssertion(line) || IsException(line);
}

ReadLine Judge::Add(const std::string& file, std::uint64_t number, std::string_view line) {
    ReadLine read{log::ReadStatement(line)};
    if (!read.statement) {
        AddError({file, number, line});
        return read;
    }
    const Place place{file, number, read.statement->text};
    last_ = read.statement->process;
    RunModel& run = RunOf(*read.statement, place);
    using Event = log::RunReader::Event;
    const Event event = run.Add(*read.statement, place);
    read.message = event == Event::Message ? &run.Reader().LastMessage() : nullptr;
    read.request = event == Event::Request ? &run.Reader().LastRequest() : nullptr;
    if (run.HasEnded()) {
        Close(last_);
    }
    return read;
}

/// @return the run that the statement belongs to
RunModel& Judge::RunOf(const log::Statement& statement, const Place& place) {
    auto run = open_.find(last_);
    if (run != open_.end() && run->second->StartsAnother(statement.sign)) {
        Close(last_);
        run = open_.end();
    }
    if (run == open_.end()) {
        run = open_.emplace(last_, std::make_unique<RunModel>(place, keep_)).first;
        hasBegun_ = true;
    }
    return *run->second;
}

void Judge::AddError(const Place& place) {
    const auto run = open_.find(last_);
    if (run != open_.end() && IsAssertion(place.text)) {
        run->second->AddAssertion(place);
    } else if (run != open_.end() && IsException(place.text)) {
        run->second->AddException(place);
    } else if (run != open_.end() && IsMarkerFailure(place.text)) {
        run->second->AddMarkerFailure(place);
    }
}

bool Judge::IsOver() const {
    const bool allOver =
        std::all_of(open_.begin(), open_.end(), [](const auto& run) { return run.second->IsOver(); });
    return allOver && hasBegun_;
}

void Judge::Close(std::optional<int> process) {
    const auto run = open_.find(process);
    if (limits_.delivered || limits_.proxy) {
        held_.push_back(run->second->TakeFacts());
    } else {
        take_(Judged(run->second->Facts(), limits_, keep_.words));
    }
    open_.erase(run);
}

void Judge::Finish() {
    while (!open_.empty()) {
        Close(open_.begin()->first);
    }
    if (limits_.delivered) {
        Inspection(*limits_.delivered, before_).LookFor(held_);
    }
    if (limits_.proxy) {
        WireInspection(*limits_.proxy, limits_.patience, keep_.steps).LookFor(held_);
    }
    for (const Run& run : held_) {
        take_(Judged(run, limits_, keep_.words));
    }
    held_.clear();
}

}  // namespace rig::judge
