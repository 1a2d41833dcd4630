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
    timings.reserve(timings.size() + reactions.size());
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
    ReadLine read(line);
    if (!read.statement) {
        AddError({file, number, line});
        return read;
    }
    const Place place{file, number, read.statement->text};
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
    if (statement.process != last_) {
        last_ = statement.process;
        const auto run = open_.find(last_);
        current_ = run == open_.end() ? nullptr : run->second.get();
    }
    if (current_ != nullptr && current_->StartsAnother(statement.sign)) {
        Close(last_);
    }
    if (current_ == nullptr) {
        current_ = open_.emplace(last_, std::make_unique<RunModel>(place, keep_)).first->second.get();
        hasBegun_ = true;
    }
    return *current_;
}

void Judge::AddError(const Place& place) {
    if (current_ == nullptr) {
        return;
    }
    if (IsAssertion(place.text)) {
        current_->AddAssertion(place);
    } else if (IsException(place.text)) {
        current_->AddException(place);
    } else if (IsMarkerFailure(place.text)) {
        current_->AddMarkerFailure(place);
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
    current_ = process == last_ ? nullptr : current_;
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
