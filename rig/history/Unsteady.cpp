#include <algorithm>
#include <utility>

#include "rig/history/History.h"

namespace rig::history {
namespace {

/// A failure that became known is the same failure.
bool IsChange(const std::string& before, const std::string& after) {
    const auto isFail = [](const std::string& outcome) {
        return outcome == "FAIL" || outcome == "KNOWN FAILURE";
    };
    return before != after && !(isFail(before) && isFail(after));
}

/// The outcomes of a case with one firmware, in order.
struct FirmwareCourse {
    std::string note;
    std::vector<Text> outcomes;

    std::size_t Changes() const {
        std::size_t changes = 0;
        for (std::size_t index = 1; index < outcomes.size(); ++index) {
            changes += IsChange(*outcomes[index - 1], *outcomes[index]) ? 1U : 0U;
        }
        return changes;
    }
};

FirmwareCourse& FirmwareOf(const std::string& note, std::vector<FirmwareCourse>& firmwares) {
    const auto place = std::find_if(
        firmwares.begin(), firmwares.end(),
        [&note](const FirmwareCourse& firmware) { return !note.empty() && firmware.note == note; });
    return place != firmwares.end() ? *place : firmwares.emplace_back(FirmwareCourse{note, {}});
}

std::vector<FirmwareCourse> FirmwaresOf(const CaseCourse& one, const std::vector<Build>& builds) {
    std::vector<FirmwareCourse> firmwares;
    for (const Cell& cell : one.cells) {
        FirmwareCourse& firmware = FirmwareOf(builds[cell.build].facts.note, firmwares);
        std::copy_if(cell.digest.outcomes.begin(), cell.digest.outcomes.end(),
                     std::back_inserter(firmware.outcomes),
                     [](Text outcome) { return TellsOfRecorder(*outcome); });
    }
    return firmwares;
}

UnsteadyCase UnsteadyOf(const CaseCourse& one, const std::vector<Build>& builds) {
    UnsteadyCase unsteady;
    unsteady.name = one.name;
    for (const FirmwareCourse& firmware : FirmwaresOf(one, builds)) {
        const std::size_t changes = firmware.Changes();
        unsteady.changes += changes;
        unsteady.chances += firmware.outcomes.empty() ? 0 : firmware.outcomes.size() - 1;
        if (changes > 0) {
            unsteady.firmwares.push_back({firmware.note, {}});
            for (const Text outcome : firmware.outcomes) {
                ++unsteady.firmwares.back().outcomes[*outcome];
            }
        }
    }
    return unsteady;
}

}  // namespace

std::vector<UnsteadyCase> UnsteadyIn(const std::vector<CaseCourse>& cases, const std::vector<Build>& builds) {
    std::vector<UnsteadyCase> all;
    for (const CaseCourse& one : cases) {
        UnsteadyCase unsteady = UnsteadyOf(one, builds);
        if (unsteady.changes > 0) {
            all.push_back(std::move(unsteady));
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const UnsteadyCase& one, const UnsteadyCase& other) {
        return one.Rate() > other.Rate();
    });
    return all;
}

}  // namespace rig::history
