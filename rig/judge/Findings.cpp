#include "rig/judge/Findings.h"

#include <fmt/format.h>

#include <algorithm>

namespace rig::judge {

using result::Verdict;

namespace {

bool Concerns(const Request& request, const std::string& name) {
    const bool isPlain = request.fault == Fault::None || request.fault == Fault::Rehash;
    return name.empty() || (request.name == name && isPlain);
}

}  // namespace

bool Always(const Run& /*run*/) {
    return true;
}

bool IsExport(const Run& run) {
    return !run.Saw(log::Sign::ConfigSwitch) && !run.Saw(log::Sign::SizeSwitch);
}

bool IsSecondDialect(const Run& run) {
    return run.switches.protocol == 2 && IsExport(run);
}

bool AsksWhole(const Run& run) {
    return !run.Saw(log::Sign::SizeSwitch);
}

Finding Pass(const Text& expected, const Text& found, const Tally& proof) {
    return {Verdict::Pass, expected, found, proof.Shown()};
}

Finding Fail(const Text& expected, const Text& found, const Tally& proof) {
    return {Verdict::Fail, expected, found, proof.Shown()};
}

Finding Inconclusive(const Text& expected, const Text& reason, const Tally& proof) {
    return {Verdict::Inconclusive, expected, reason, proof.Shown()};
}

Finding NotReached(const Text& expected, const Text& found) {
    return {Verdict::NotReached, expected, found, {}};
}

Finding NotInjected(const Run& run, const Text& otherwise) {
    if (run.switches.protocol == 1) {
        return Inconclusive(kFired, "protocol 1.0 does not heed this switch: it was never injected");
    }
    if (run.Saw(log::Sign::ConfigSwitch)) {
        return Inconclusive(kFired, "never injected: with -g nothing else is asked for");
    }
    if (run.Saw(log::Sign::SizeSwitch)) {
        return Inconclusive(kFired,
                            "never injected: with -z a good DVR answers nothing, so it does not come to it");
    }
    return Inconclusive(kFired, "never injected: " + otherwise.Whole());
}

std::string Words(const Text& found, const Tally& tally) {
    std::string detail = tally.Note();
    if (tally.Count() > 1) {
        detail += fmt::format("{}{} times", detail.empty() ? "" : ", ", tally.Count());
    }
    return detail.empty() ? found.Whole() : found.Whole() + " (" + detail + ")";
}

Finding NoneOf(std::initializer_list<Bad> bad, bool reached, const Text& expected, const Text& notReached) {
    for (const Bad& one : bad) {
        if (one.tally.Any()) {
            return Fail(expected, Words(one.found, one.tally), one.tally);
        }
    }
    return reached ? Pass(expected, "nothing else") : NotReached(expected, notReached);
}

double Waited(const Run& run, const Request& request) {
    return run.endTime && request.time ? static_cast<double>(*run.endTime - *request.time) / 1e6 : 0;
}

bool IsUnanswered(const Run& run, const Request& request, const Limits& limits) {
    return request.isOvertaken ||
           (run.Saw(log::Sign::ShuttingDown) && Waited(run, request) >= limits.patience);
}

Tally Unanswered(const Run& run, const std::string& name, const Limits& limits) {
    Tally unanswered;
    for (const Request& request : run.pending) {
        if (Concerns(request, name) && IsUnanswered(run, request, limits)) {
            unanswered.Add(request.line.Proof(request.Words() + " goes out"),
                           fmt::format("{} waited for {:.1f} s", request.Words(), Waited(run, request)));
        }
    }
    return unanswered;
}

bool IsWaiting(const Run& run, const std::string& name) {
    return std::any_of(run.pending.begin(), run.pending.end(),
                       [&name](const Request& request) { return Concerns(request, name); });
}

bool RanForLong(const Run& run, const Limits& limits) {
    return run.Saw(log::Sign::ShuttingDown) && run.beginTime && run.endTime &&
           static_cast<double>(*run.endTime - *run.beginTime) / 1e6 >= limits.patience;
}

}  // namespace rig::judge
