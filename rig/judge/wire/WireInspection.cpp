#include "rig/judge/wire/WireInspection.h"

#include <fmt/format.h>

#include <algorithm>

#include "rig/base/Printable.h"

namespace rig::judge {
namespace {

using Kind = WireEvent::Kind;

constexpr std::int64_t kClocks = 1'000'000;  // microseconds between the call and the harness's first line
constexpr std::int64_t kMoment = 1'000'000;  // microseconds until the end of a connection is noticed
constexpr std::size_t kMostPlanned = 1000;
constexpr std::size_t kMostOverlaps = 100;

/// @return the run that a connection belongs to: the last that had begun
std::size_t RunAt(std::int64_t time, const std::vector<Run>& runs) {
    std::size_t found = 0;
    for (std::size_t run = 0; run < runs.size(); ++run) {
        if (runs[run].beginTime && *runs[run].beginTime <= time + kClocks) {
            found = run;
        }
    }
    return found;
}

/// Notes how long the DVR has stayed away after DONE.
void NoteCall(std::int64_t time, const Place& place, WireFacts& facts) {
    if (!facts.doneTime) {
        return;
    }
    const std::int64_t after = time - *facts.doneTime;
    if (!facts.calledAfter || after < *facts.calledAfter) {
        KeptLine line;
        facts.lines->Keep(place, line);
        facts.calledAgain = {};
        facts.calledAgain.Add(line.Proof());
        facts.calledAfter = after;
    }
    facts.doneTime.reset();
}

std::string NameIn(const std::string& on) {
    return on.substr(0, on.find(':'));
}

}  // namespace

void WireInspection::LookFor(std::vector<Run>& runs) {
    for (std::size_t run = 0; run < std::max<std::size_t>(runs.size(), 1); ++run) {
        facts_.push_back(std::make_shared<WireFacts>());
    }
    const bool isCut =
        ReadWireLog(file_, [&](const WireEvent& event, const Place& place) { Take(event, place, runs); });
    Finish(isCut);
    for (std::size_t run = 0; run < runs.size(); ++run) {
        runs[run].wire = std::move(facts_[run]);
    }
}

void WireInspection::Take(const WireEvent& event, Place place, const std::vector<Run>& runs) {
    last_ = event.time;
    if (event.kind == Kind::Plan && planned_.size() < kMostPlanned) {
        facts_.front()->lines->Keep(place, planned_.emplace_back(Planned{event, {}}).line);
    } else if (event.kind == Kind::Connect) {
        TakeCall(event, place, runs);
    }
    const auto open = open_.find(event.connection.value_or(0));
    if (open != open_.end()) {
        place.kept = facts_[open->second.run]->lines.get();
        if (Follow(event, place, open->second)) {
            EndOverlaps(open->first, event.time, event.kind == Kind::Refused || event.by == "dvr");
        }
        if (event.kind == Kind::Refused || open->second.connection.IsOver()) {
            open_.erase(open);
        }
    }
}

/// @return whether the connection is no longer open
bool WireInspection::Follow(const WireEvent& event, const Place& place, Open& open) {
    if (event.kind == Kind::Refused) {
        ++facts_[open.run]->refusedCalls;
        return true;
    }
    if (event.kind == Kind::Fault) {
        TakeActed(event, open.run);
    }
    open.connection.Take(event, place);
    return !open.connection.IsOpen();
}

void WireInspection::TakeCall(const WireEvent& event, const Place& place, const std::vector<Run>& runs) {
    const std::size_t run = RunAt(event.time, runs);
    for (const auto& [number, earlier] : open_) {
        if (earlier.connection.IsServed() && overlaps_.size() < kMostOverlaps) {
            facts_[run]->lines->Keep(place,
                                     overlaps_.emplace_back(Overlap{number, run, event.time, {}}).line);
        }
    }
    for (const auto& facts : facts_) {
        NoteCall(event.time, place, *facts);
    }
    ++facts_[run]->connections;
    const int dialect = runs.empty() ? 1 : runs[run].switches.protocol;
    const std::uint64_t number = event.connection.value_or(0);
    open_.erase(number);
    open_.emplace(number, Open{run, WireConnection(event, dialect, patience_, *facts_[run])});
}

void WireInspection::TakeActed(const WireEvent& event, std::size_t run) {
    const auto planned = std::find_if(planned_.begin(), planned_.end(), [&event](const Planned& one) {
        const bool isThere = one.event.on.empty() || NameIn(one.event.on) == event.message;
        return !one.hasActed && isThere && one.event.Named() == event.Named();
    });
    if (planned != planned_.end()) {
        planned->hasActed = true;
    }
    if (wantsSteps_) {
        facts_[run]->steps.push_back(
            {result::Step::Kind::Fault, event.time,
             Printable(fmt::format("proxy: {} at {}", event.Named(), event.message))});
    }
}

void WireInspection::EndOverlaps(std::uint64_t connection, std::int64_t time, bool isByDvr) {
    const auto isOver = [&](const Overlap& one) {
        if (one.earlier != connection) {
            return false;
        }
        if (!isByDvr || time - one.time > kMoment) {
            facts_[one.run]->secondCalls.Add(one.line.Proof());
        }
        return true;
    };
    overlaps_.erase(std::remove_if(overlaps_.begin(), overlaps_.end(), isOver), overlaps_.end());
}

void WireInspection::Finish(bool isCut) {
    for (auto& [number, open] : open_) {
        open.connection.End(last_);
        EndOverlaps(number, last_, true);
    }
    open_.clear();
    for (const auto& facts : facts_) {
        facts->isCut = isCut;
        facts->last = last_;
        for (const Planned& planned : planned_) {
            if (!planned.hasActed) {
                const std::string& on = planned.event.on;
                facts->neverActed.Add(planned.line.Proof(),
                                      Printable(planned.event.Named() + (on.empty() ? "" : " at " + on)));
            }
        }
    }
}

void AddFaults(const WireFacts& facts, std::vector<result::Step>& steps) {
    std::vector<result::Step> all;
    auto fault = facts.steps.begin();
    const auto addFault = [&] {
        all.push_back(*fault++);
        all.back().line = all.size() > 1 ? all[all.size() - 2].line : 0;
    };
    for (result::Step& step : steps) {
        while (step.time && fault != facts.steps.end() && *fault->time < *step.time) {
            addFault();
        }
        all.push_back(std::move(step));
    }
    while (fault != facts.steps.end()) {
        addFault();
    }
    steps = std::move(all);
}

}  // namespace rig::judge
