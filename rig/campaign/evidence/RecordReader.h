#pragma once

#include <optional>
#include <string>

#include "rig/campaign/evidence/Records.h"
#include "rig/result/Result.h"

// Reads back what a campaign has written.

namespace rig::campaign {

/// A case that an earlier run of the campaign has finished.
struct FinishedCase {
    CaseRecord record;
    result::RunResult result;
};

/// @return whether the case has come to its end
bool IsOver(Outcome outcome);

/// @param planned  the case's plan, run and id
/// @return the case as its case.json has it, without checks and timings. Throws log::Unreadable.
CaseRecord ReadCaseRecord(const std::string& campaign, const CaseRecord& planned);

/// @param record  of the case: gets its checks and timings
/// @return what its verdict.json has, without the log. Throws log::Unreadable.
result::RunResult ReadCaseResult(const std::string& campaign, CaseRecord& record);

/// @param planned  the case's plan, run and id
/// @return the case as it stands in the folder of its campaign; nothing if it has not come to its end, or if
/// its evidence is not whole
std::optional<FinishedCase> ReadFinishedCase(const std::string& campaign, const CaseRecord& planned);

}  // namespace rig::campaign
