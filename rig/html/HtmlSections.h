#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>

#include "rig/html/LogPlaces.h"
#include "rig/result/Result.h"

// The sections of a page about a run.

namespace rig::html {

/// Adds the table of a run's checks, the worst first; each row's anchor is the prefix and the check's id.
void AddChecks(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
               const std::string& prefix);

/// Adds the table of the DVR's reaction times.
void AddTimings(pugi::xml_node section, const result::RunResult& run);

/// Adds one table of all runs by check; each cell links to the check of the run.
void AddMatrix(pugi::xml_node section, const result::Result& result);

/// @return how the anchors of a run, counted from 0, begin: nothing for the first, "run2-" for the second
std::string PrefixOf(std::size_t run);

/// Adds the dialogue as a ladder in SVG: two lifelines, arrows with the messages, injected faults and notes
/// between them, in pieces that fit a printed page. @param limit how many steps the page holds, not counting
/// the faults
void AddLadder(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
               std::size_t limit);

/// Adds the log with its search, which needs the page's script.
void AddLog(pugi::xml_node section, const result::RunResult& run, const LogPlaces& places,
            const std::string& prefix);

}  // namespace rig::html
