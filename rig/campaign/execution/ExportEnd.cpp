#include <fmt/format.h>

#include <cmath>
#include <csignal>
#include <set>

#include "rig/base/Port.h"
#include "rig/campaign/execution/Export.h"

// How an export ends: what is watched after it, and in which order DVR and harness are stopped.

namespace rig::campaign {
namespace {

constexpr double kWatchedWhole = 0.5;  // seconds, so that the log covers all of -d
constexpr double kSettle = 2;          // seconds for the DVR to close after the end
constexpr double kStop = 15;  // seconds for the harness to end when told to: a proxy gives 5 to its harness,
                              // and 5 to what is on its way

}  // namespace

/// The side that closes first has its port held for a minute. After a good end, let that be the DVR: it gets
/// a moment to close by itself, and is told to if we started it. After a bad end its close would look like a
/// failure of its own in the log.
void Export::Settle() {
    if (facts_.end != End::Done && facts_.end != End::Silence && facts_.end != End::NoEvents) {
        return;
    }
    const auto isClosed = [this] {
        if (manner_.endsByItself) {
            return harness_->Command().End().has_value();
        }
        return (dvr_ == nullptr || manner_.playsOn || dvr_->End()) && !LookAtPort(kHarnessPort).IsConnected();
    };
    if (facts_.end == End::Done) {
        Linger();
    }
    if (facts_.end != End::Silence) {
        Until(kSettle, isClosed, manner_.playsOn ? kSlowTick : kTick);
    }
    if (dvr_ != nullptr && !manner_.playsOn && !dvr_->End()) {
        StopDvr();
        Until(kSettle, isClosed);
    }
}

/// Keeps watching for a DVR that calls again. Its call may show in the log; where the harness still holds the
/// connection before it, only the kernel knows.
void Export::Linger() {
    const Clock::time_point begin = Clock::now();
    const Clock::time_point done = watch_->DoneAt().value_or(begin);
    const double away = SecondsAway(record_.plan);
    const double seconds = rig_.linger.value_or(away > 0 ? away + kWatchedWhole : 0);
    const auto hasCalled = [&] {
        std::set<std::uint16_t> callers = LookAtPort(kHarnessPort).Callers();
        callers.erase(watch_->FirstCaller());
        return watch_->HeardAgainAt() || !callers.empty();
    };
    const auto isOver = [&] {
        display_.Show("watching whether the DVR stays away",
                      fmt::format("{:.0f} s left", std::ceil(std::max(seconds - Since(done), 0.0))));
        return interrupts_.Came() || harness_->Command().End() || hasCalled();
    };
    if (seconds <= Since(done)) {
        return;
    }
    judge::AfterDone after;
    const bool isCut = Until(seconds - Since(done), isOver, kSlowTick);
    if (interrupts_.Came()) {
        TakeInterrupt();
    } else if (isCut) {  // a second connection may also end the harness
        after.calledAfter = Since(done);
        Until(kSettle, [this] { return interrupts_.Came(); });  // so that the log shows what it can
    } else if (LookAtPort(kHarnessPort).isListening) {
        after.watchedFor = Since(done);
    }
    harness_->Tell(after);
    record_.times.lingered = Since(begin);
}

void Export::StopHarness() {
    Child& command = harness_->Command();
    if (command.End()) {
        facts_.isStopped = manner_.endsByItself && command.End()->IsStatus(kInterruptedHarness);
        return;
    }
    facts_.isStopped = true;
    const auto hasEnded = [&command] { return command.End().has_value(); };
    if (rig_.stop.empty()) {
        record_.harness.stoppedBy = "SIGINT";
        command.Signal(SIGINT);
        Until(kStop, hasEnded);
    } else {
        record_.harness.stoppedBy = rig_.stop;
        const GrowingFile output = folder_.Grow("stop.log");
        Child stop({rig_.stop, output.Number(), output.Number()});
        Until(kStop, hasEnded);
    }
    if (!hasEnded()) {
        record_.harness.stoppedBy += ", SIGKILL";
        command.Signal(SIGKILL);
        Until(kStop, hasEnded);
    }
}

void Export::StopDvr() {
    if (dvr_ == nullptr || manner_.keepsDvr) {
        return;
    }
    const auto hasEnded = [this] { return dvr_->End().has_value(); };
    for (const int signal : {SIGTERM, SIGKILL}) {
        if (!hasEnded()) {
            record_.dvr->stoppedBy = signal == SIGTERM ? "SIGTERM" : "SIGTERM, SIGKILL";
            dvr_->Signal(signal);
            Until(kSettle, hasEnded);
        }
    }
    dvr_->Signal(SIGTERM);  // what it has left
    record_.dvr->end = dvr_->End();
}

}  // namespace rig::campaign
