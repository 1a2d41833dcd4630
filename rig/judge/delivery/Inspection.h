#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "rig/judge/Run.h"
#include "rig/judge/delivery/Comparison.h"

namespace rig::judge {

/// What is in the folder, by path.
using Snapshot = std::map<std::string, Stamp>;

/// @return every file in the folder and below it; folders behind links are left out
/// @param unseen  gets the folders that cannot be read
Snapshot FilesIn(const std::string& folder, Files& unseen);

/// Holds what is in the folder against what the logs say of it.
class Inspection {
 public:
    /// @param before  the folder as it was before the runs; nothing if nobody looked
    Inspection(const DeliveryPlace& place, std::optional<Snapshot> before)
        : place_(place), before_(std::move(before)) {}

    /// Gives each run its facts. @param runs  all that the logs tell of, in their order
    void LookFor(std::vector<Run>& runs);

 private:
    enum class Age { Before, During, Unknown };

    void Assign(const std::vector<Run>& runs);
    void LookAtFile(const Run& run, const FileName& name, const Transfer& transfer, DeliveryFacts& facts);
    void LookAtComplete(const Run& run, const FileName& name, const Transfer& transfer,
                        const DeliveredFile& file, DeliveryFacts& facts);
    void LookAtTimes(const Run& run, const FileName& name, const Transfer& transfer, const Stamp& stamp,
                     DeliveryFacts& facts) const;
    void LookAtRest(const std::vector<Run>& runs, std::vector<DeliveryFacts>& facts) const;
    void TakeUnasked(const std::vector<Run>& runs, const std::string& path, const Stamp& stamp,
                     std::vector<DeliveryFacts>& facts) const;
    bool IsPartOfFailed(const Run& run, const std::string& path) const;
    Age AgeOf(const Run& run, const std::string& path, const Stamp& stamp) const;

    const DeliveryPlace& place_;
    std::optional<Snapshot> before_;
    std::map<std::string, std::pair<FileName, const Transfer*>> last_;  // FILE_COMPLETE about each path
    std::set<std::string> asked_;  // paths, and what links in them lead to
    Announced announced_;
};

}  // namespace rig::judge
