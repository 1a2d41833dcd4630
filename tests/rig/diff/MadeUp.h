#pragma once

#include <string>
#include <vector>

#include "rig/diff/Compare.h"

// Made-up campaigns of one case, holding only what a test is about.

/// @return a run with this outcome, without checks or messages
rig::diff::CaseRun RunThat(const std::string& outcome, const std::string& reason = "");

/// @return a passed run with the messages
rig::diff::CaseRun RunWith(const std::vector<std::string>& messages);

/// @return a campaign of the case "xfer-2.0" with these runs
rig::diff::Campaign CampaignOf(std::vector<rig::diff::CaseRun> runs);

/// Compares two such campaigns. @return what changed in their case
rig::diff::CaseComparison CompareRuns(std::vector<rig::diff::CaseRun> before,
                                      std::vector<rig::diff::CaseRun> after);

/// Fails unless the case has exactly this difference.
void ExpectOnly(const rig::diff::CaseComparison& compared, rig::diff::Change change,
                const std::string& subject, const std::string& before, const std::string& after);
