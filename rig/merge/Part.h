#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "rig/base/Descriptor.h"
#include "rig/campaign/evidence/Records.h"

namespace rig::merge {

/// One of the campaigns to merge, with what its folder tells of each case.
struct Part {
    std::string folder;
    Descriptor hold;                   // keeps campaigns from writing to the folder
    nlohmann::ordered_json json;       // campaign.json, as it was read
    campaign::CampaignRecord record;   // the cases without checks and timings
    campaign::PartRecord told;         // what the merged campaign tells of it
    std::vector<std::string> planned;  // ids of all cases of the campaign that it is a part of, in order

    /// @return whether cases may be missing because it was interrupted or killed
    bool IsCutShort() const { return record.state != "finished"; }

    /// @return the case of that id; null if it has none
    const campaign::CaseRecord* Find(const std::string& id) const;
};

/// Reads campaign.json and each case.json. Evidence that they name must be there, and nothing in the folder
/// may lead out of it. Throws log::Unreadable, which names the file, what was expected and what was found;
/// the same for what is not a campaign of cases, or still runs.
Part ReadPart(const std::string& folder);

}  // namespace rig::merge
