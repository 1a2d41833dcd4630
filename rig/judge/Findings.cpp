#include "rig/judge/Findings.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "rig/judge/Framing.h"

namespace rig::judge {

using result::Verdict;

namespace {

// The harness pauses after each read: how long it may take over a text that is there.
constexpr double kSecondsPerRead = 0.25;
constexpr double kBytesPerRead = 4096;

bool Concerns(const Request& request, std::string_view name) {
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

Finding Warn(const Text& expected, const Text& found, const Tally& proof) {
    return {Verdict::Warning, expected, found, proof.Shown()};
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
            return {one.verdict, expected, Words(one.found, one.tally), one.tally.Shown()};
        }
    }
    return reached ? Pass(expected, "nothing else") : NotReached(expected, notReached);
}

double Waited(const Run& run, const Request& request) {
    const auto since = request.heard ? request.heard : request.time;
    return run.endTime && since ? static_cast<double>(*run.endTime - *since) / 1e6 : 0;
}

/// @return how long a request waited in vain, and what came last
std::string HowLong(const Run& run, const Request& request) {
    std::string words = fmt::format("{} waited for {:.1f} s", request.Words(), Waited(run, request));
    if (request.isOvertaken) {
        return words + "; DONE went out meanwhile";
    }
    if (!request.mistake.empty()) {
        return words + "; the harness says: " + request.mistake;
    }
    if (run.Saw(log::Sign::UnknownMessage)) {
        words += "; the DVR sent " + run.Of(log::Sign::UnknownMessage).Note();
    }
    return words + run.AfterWhat();
}

bool IsUnanswered(const Run& run, const Request& request, const Limits& limits) {
    return request.isOvertaken ||
           (run.Saw(log::Sign::ShuttingDown) && Waited(run, request) >= limits.patience);
}

std::string NothingOfTheKind(const Run& run, const Request& request) {
    return fmt::format("the DVR sent nothing of the kind ({})", HowLong(run, request));
}

Tally Unanswered(const Run& run, std::string_view name, const Limits& limits) {
    Tally unanswered;
    for (const Request& request : run.pending) {
        if (Concerns(request, name) && IsUnanswered(run, request, limits)) {
            result::Evidence proof = request.line.Proof();
            proof.note = request.Words() + " goes out";
            unanswered.Add(proof, HowLong(run, request));
        }
    }
    return unanswered;
}

Tally Stalled(const Run& run, const Limits& limits) {
    const Announcement& last = run.announcement;
    Tally stalled;
    if (!last.isOpen || !last.time || !run.endTime || !run.Saw(log::Sign::ShuttingDown)) {
        return stalled;
    }
    const double waited = static_cast<double>(*run.endTime - *last.time) / 1e6;
    const double reading = kSecondsPerRead * (1 + static_cast<double>(last.length) / kBytesPerRead);
    if (waited >= limits.patience + reading) {
        stalled.Add(last.line.Proof(),
                    fmt::format("{}; the harness waited for {:.1f} s{}",
                                ExplainMissing(last.length, std::nullopt).words, waited, run.AfterWhat()));
    }
    return stalled;
}

bool IsWaiting(const Run& run, std::string_view name) {
    return std::any_of(run.pending.begin(), run.pending.end(),
                       [name](const Request& request) { return Concerns(request, name); });
}

bool RanForLong(const Run& run, const Limits& limits) {
    return run.Saw(log::Sign::ShuttingDown) && run.beginTime && run.endTime &&
           static_cast<double>(*run.endTime - *run.beginTime) / 1e6 >= limits.patience;
}

}  // namespace rig::judge
