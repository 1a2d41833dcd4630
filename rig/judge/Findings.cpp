#include "rig/judge/Findings.h"

#include <fmt/format.h>

namespace rig::judge {

using report::Verdict;

bool Always(const Run& /*run*/) {
    return true;
}

bool IsExport(const Run& run) {
    return !run.Saw(Sign::ConfigSwitch) && !run.Saw(Sign::SizeSwitch);
}

bool IsSecondDialect(const Run& run) {
    return run.protocol == 2 && IsExport(run);
}

bool AsksWhole(const Run& run) {
    return !run.Saw(Sign::SizeSwitch);
}
Finding Pass(const std::string& expected, const std::string& found, const Tally& proof) {
    return {Verdict::Pass, expected, found, proof.Lines()};
}

Finding Fail(const std::string& expected, const std::string& found, const Tally& proof) {
    return {Verdict::Fail, expected, found, proof.Lines()};
}

Finding Inconclusive(const std::string& expected, const std::string& reason, const Tally& proof) {
    return {Verdict::Inconclusive, expected, reason, proof.Lines()};
}

Finding NotReached(const std::string& expected, const std::string& found) {
    return {Verdict::NotReached, expected, found, {}};
}

Finding NoneOf(std::initializer_list<Bad> bad, bool reached, const std::string& expected,
               const std::string& notReached) {
    for (const Bad& one : bad) {
        if (one.tally.Any()) {
            return Fail(expected, fmt::format("{} ({}x)", one.found, one.tally.Count()), one.tally);
        }
    }
    return reached ? Pass(expected, "nothing else") : NotReached(expected, notReached);
}

double Waited(const Run& run, const Request& request) {
    return run.endTime && request.time ? static_cast<double>(*run.endTime - *request.time) / 1e6 : 0;
}

bool IsUnanswered(const Run& run, const Request& request, const Limits& limits) {
    return run.doneSent.Any() || (run.Saw(Sign::ShuttingDown) && Waited(run, request) >= limits.patience);
}

bool RanForLong(const Run& run, const Limits& limits) {
    return run.Saw(Sign::ShuttingDown) && run.beginTime && run.endTime &&
           static_cast<double>(*run.endTime - *run.beginTime) / 1e6 >= limits.patience;
}

}  // namespace rig::judge
