#pragma once

#include <pugixml.hpp>
#include <string>

#include "rig/history/History.h"

// The sections of a history's page.

namespace rig::history {

/// Adds the cases by campaign: a table for each few campaigns, so that none is wider than a screen; the
/// latest first.
/// @param place  the folder where the page will be
void AddMatrix(pugi::xml_node main, const History& history, const std::string& place);

/// Adds a plot for each request and case, below the rule for the marks.
void AddPlots(pugi::xml_node main, const History& history);

/// Adds a link to the row of a campaign. @param text  its number and name, if empty
void AddBuildLink(pugi::xml_node parent, const History& history, std::size_t build,
                  const std::string& text = "");

/// @return the path of what a link to a case leads to: its report, if it has one, or its folder
std::string EvidenceOf(const History& history, std::size_t build, const std::string& folder, bool hasPage);

}  // namespace rig::history
