#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace rig {

/// What a --list-... option prints: a row for each thing, with its name in the first cell.
struct Listing {
    std::vector<std::string> heads;
    std::vector<std::vector<std::string>> rows;  // each with a cell for every head
};

/// @return the listing for people: each name on a line of its own, the other cells below it, wrapped at
/// `columns`
std::string AsText(const Listing& listing, std::size_t columns);

/// @return the listing as a table in Markdown, the names as code
std::string AsMarkdown(const Listing& listing);

/// Prints the listing to standard output. @param format  "text", as wide as the terminal but 100 columns at
/// most, or "markdown"
void Print(const Listing& listing, const std::string& format);

}  // namespace rig
