#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "rig/merge/Merge.h"
#include "rig/merge/Part.h"

namespace rig::merge {

/// A signal came while the folder was being written.
class Interrupted : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Writes the folder of the merged campaign, whole or not at all: beside `out`, and renamed at the end. Each
/// case has the evidence of the part that it stands as, and in it what the others have of it; parts/N.json is
/// what campaign.json of part N was. Throws log::Unreadable for evidence that cannot be read, Interrupted,
/// and std::runtime_error when something cannot be written.
/// @param out  is new or empty
void WriteFolder(const std::string& out, const Merged& merged, const std::vector<Part>& parts);

}  // namespace rig::merge
