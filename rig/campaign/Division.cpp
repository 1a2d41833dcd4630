#include "rig/campaign/Division.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <numeric>
#include <set>

namespace rig::campaign {
namespace {

/// What one machine has been given so far.
struct Load {
    std::int64_t seconds = 0;
    std::set<int> dialects;
};

bool IsFrame(const Case& plan, bool hasOnlyChosen) {
    return !hasOnlyChosen && plan.role != Case::Role::Fault;
}

class Division {
 public:
    Division(const std::vector<Case>& whole, bool hasOnlyChosen)
        : whole_(whole), hasOnlyChosen_(hasOnlyChosen), parts_(whole.size()) {
        for (const Case& plan : whole) {
            frames_[plan.protocol] += IsFrame(plan, hasOnlyChosen) ? ExpectedSeconds(plan) : 0;
        }
    }

    /// The longest first, each to the part that is then the shortest.
    void Among(std::size_t total) {
        const std::vector<std::size_t> longest = LongestFirst();
        std::vector<Load> loads(std::min(total, longest.size()));
        for (const std::size_t at : longest) {
            const auto least =
                std::min_element(loads.begin(), loads.end(), [&](const Load& one, const Load& other) {
                    return SecondsWith(one, whole_[at]) < SecondsWith(other, whole_[at]);
                });
            least->seconds = SecondsWith(*least, whole_[at]);
            least->dialects.insert(whole_[at].protocol);
            parts_[at] = static_cast<std::size_t>(least - loads.begin()) + 1;
        }
    }

    std::vector<Case> Part(std::size_t part) const {
        const std::set<int> dialects = DialectsOf(part);
        std::vector<Case> cases;
        for (std::size_t at = 0; at < whole_.size(); ++at) {
            const bool isFrame = IsFrame(whole_[at], hasOnlyChosen_);
            if (isFrame ? dialects.empty() || dialects.count(whole_[at].protocol) > 0 : parts_[at] == part) {
                cases.push_back(whole_[at]);
            }
        }
        return cases;
    }

 private:
    std::vector<std::size_t> LongestFirst() const {
        std::vector<std::size_t> all(whole_.size());
        std::iota(all.begin(), all.end(), 0U);
        std::vector<std::size_t> cases;
        std::copy_if(all.begin(), all.end(), std::back_inserter(cases),
                     [this](std::size_t at) { return !IsFrame(whole_[at], hasOnlyChosen_); });
        std::stable_sort(cases.begin(), cases.end(), [this](std::size_t one, std::size_t other) {
            return ExpectedSeconds(whole_[one]) > ExpectedSeconds(whole_[other]);
        });
        return cases;
    }

    std::int64_t SecondsWith(const Load& load, const Case& plan) const {
        const bool isNew = load.dialects.count(plan.protocol) == 0;
        return load.seconds + ExpectedSeconds(plan) + (isNew ? frames_.at(plan.protocol) : 0);
    }

    std::set<int> DialectsOf(std::size_t part) const {
        std::set<int> dialects;
        for (std::size_t at = 0; at < whole_.size(); ++at) {
            if (parts_[at] == part) {
                dialects.insert(whole_[at].protocol);
            }
        }
        return dialects;
    }

    const std::vector<Case>& whole_;
    bool hasOnlyChosen_;
    std::vector<std::size_t> parts_;      // of each case, from 1
    std::map<int, std::int64_t> frames_;  // seconds of the clean exports, by dialect
};

}  // namespace

std::vector<Case> PartOf(const std::vector<Case>& whole, const Shard& shard, bool hasOnlyChosen) {
    Division division(whole, hasOnlyChosen);
    division.Among(shard.total);
    return division.Part(shard.index);
}

}  // namespace rig::campaign
