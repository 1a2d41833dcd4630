#pragma once

#include <string>

#include "rig/campaign/Cases.h"
#include "rig/campaign/Outcome.h"
#include "rig/campaign/evidence/CaseFolder.h"
#include "rig/campaign/execution/Rig.h"
#include "rig/fault/Fault.h"

// What a case with a fault of the proxy is judged by: the export with the fault, as far as the fault leaves
// the DVR a choice, and the clean export after it.

namespace rig::campaign {

/// The proxy's log, in a case's folder.
constexpr const char* kProxyLog = "proxy.jsonl";

/// @return the command of the harness and the proxy before it, with the plan's fault if it has one
/// @param once  whether the harness is to end after one export
std::string ProxiedCommand(const Rig& rig, const CaseFolder& folder, const Case& plan, bool once);

/// @return whether the proxy's log shows that a fault acted
bool HasActed(const CaseFacts& facts);

/// Drops what a good DVR need not do with such a fault: to end the export, where it may hang up.
void LeaveToTheFault(CaseFacts& facts, const Case& plan);

/// Adds the check "recovery": what the clean export after the fault came to.
void AddRecovery(CaseFacts& facts, const CaseFacts& recovery);

}  // namespace rig::campaign
