#pragma once

#include <string>
#include <vector>

#include "rig/history/History.h"

// Made-up campaigns of the case "xfer-2.0", one a day, holding only what a test is about.

/// @return a campaign of that day with this note and these runs
rig::history::CampaignDigest DayWith(int day, const std::string& note, std::vector<rig::diff::CaseRun> runs);

/// @return the same of a made-up campaign
rig::history::CampaignDigest DayOf(int day, rig::diff::Campaign campaign);

/// @return a run in which the check "event-list.source" had this verdict; its folder has a page
rig::diff::CaseRun RunChecked(const std::string& verdict, const std::string& found = "");

/// @return the history of a day for each of these runs, with a note of its own
rig::history::History HistoryOfRuns(const std::vector<rig::diff::CaseRun>& runs);
