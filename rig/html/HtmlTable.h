#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace rig::html {

/// Adds a table with one row of column heads, in a frame that scrolls if the page is too narrow.
/// @return its body, to add "tr" with "td" to; a row's head is a "th", see AddRowHead
pugi::xml_node AddTable(pugi::xml_node parent, std::string_view caption,
                        const std::vector<std::string>& heads);

/// Adds a cell with its column's name, which a phone shows above it.
pugi::xml_node AddNamedCell(pugi::xml_node row, std::string_view head, std::string_view text = {});

/// Adds a cell that names its row.
pugi::xml_node AddRowHead(pugi::xml_node row, std::string_view text);

/// Says how what the row tells of came out, for the filter. @param name see Looks
void SetOutcome(pugi::xml_node row, std::string_view name);

/// Adds, before the table, a form that shows only some of its rows: those with a text, and those of some
/// outcomes. Nothing for a table of a few rows. The form needs the page's script, and stays hidden without
/// it.
/// @param body what AddTable returned, with all its rows. @param name of the form, the only one on the page:
///        the page's address keeps under it what was chosen
void AddFilter(pugi::xml_node body, std::string_view name);

}  // namespace rig::html
