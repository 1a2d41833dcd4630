#pragma once

#include <string>
#include <vector>

#include "rig/diff/Compare.h"

// Campaigns of one case, made up of what a test is about.

/// @return a run that came out so, with no check and no message
rig::diff::CaseRun RunThat(const std::string& outcome, const std::string& reason = "");

/// @return a passed run with the messages
rig::diff::CaseRun RunWith(const std::vector<std::string>& messages);

/// @return a campaign of the case "xfer-2.0" with these runs
rig::diff::Campaign CampaignOf(std::vector<rig::diff::CaseRun> runs);

/// Compares two such campaigns. @return what changed in their case
rig::diff::CaseComparison CompareRuns(std::vector<rig::diff::CaseRun> before,
                                      std::vector<rig::diff::CaseRun> after);

/// Fails where the case has another difference than just this one.
void ExpectOnly(const rig::diff::CaseComparison& compared, rig::diff::Change change,
                const std::string& subject, const std::string& before, const std::string& after);
