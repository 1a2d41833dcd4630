#pragma once

#include <string>
#include <vector>

#include "rig/history/History.h"

namespace rig::history {

/// @return the history in words for a terminal
/// @param columns  its width: as many of the last campaigns are shown side by side as fit
std::string HistoryText(const History& history, std::size_t columns, bool colour);

/// @return all of it as JSON; doc/campaign.md names the fields
std::string HistoryJson(const History& history);

/// @return the history as one self-contained HTML page
/// @param place  the folder where the page will be: its links to the evidence are relative to it
std::string HistoryPage(const History& history, const std::string& place);

/// @return one character that stands for the outcome
char LetterOf(const std::string& outcome);

/// @return what the characters mean that stand for its outcomes
std::string LetterLegend(const History& history);

/// @return "12, firmware 1.9": a campaign's number and name
std::string Words(const History& history, std::size_t build);

/// @return "changed 3 of 20 times (15 %)"
std::string Words(const UnsteadyCase& unsteady);

/// @return "firmware 1.9: 17 PASS, 2 FAIL"
std::string Words(const UnsteadyCase::Firmware& firmware);

/// @return "slower in 12, firmware 1.9: 160.0 to 210.0 ms after 41.0 to 93.7 ms"
std::string Words(const History& history, const ReactionCourse& course, const ReactionCourse::Mark& mark);

/// @return the names with commas between them
std::string Words(const std::vector<Text>& names);

}  // namespace rig::history
