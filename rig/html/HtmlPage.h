#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "rig/base/Elements.h"
#include "rig/result/Result.h"

namespace rig::html {

/// A self-contained HTML page: style and script are in it, nothing is loaded. What is added below Body() is
/// escaped when the page is written, so any text may be given; see ValidText for bytes that a page may not
/// hold.
class HtmlPage {
 public:
    /// @param title of the window and, as the page's heading, of what it shows
    explicit HtmlPage(std::string_view title);

    /// @return the element that holds the page's content, with the heading in it
    pugi::xml_node Body() const { return main_; }

    /// @return the page as text, which browsers and XML readers read alike
    std::string Text();

 private:
    pugi::xml_document document_;
    pugi::xml_node main_;
};

/// Adds a link. @param target as in href: "#id", or a path relative to the page
pugi::xml_node AddLink(pugi::xml_node parent, std::string_view target, std::string_view text);

/// Adds the verdict in words, in its colour.
pugi::xml_node AddVerdict(pugi::xml_node parent, result::Verdict verdict);

/// Adds the verdict as one letter, for tables with many of them, with a link to what it is about.
void AddVerdictLetter(pugi::xml_node parent, result::Verdict verdict, std::string_view target);

/// Says what the letters mean.
void AddLetterLegend(pugi::xml_node parent);

/// Adds a table with one row of column heads, in a frame that scrolls if the page is too narrow.
/// @return its body, to add "tr" with "td" to; a row's head is a "th", see AddRowHead
pugi::xml_node AddTable(pugi::xml_node parent, std::string_view caption,
                        const std::vector<std::string>& heads);

/// Adds a cell with its column's name, which a phone shows above it.
pugi::xml_node AddNamedCell(pugi::xml_node row, std::string_view head, std::string_view text = {});

/// Adds a term and its value to a "dl"; nothing if the value is not known.
void AddFact(pugi::xml_node list, std::string_view name, std::string_view value);

/// Adds a cell that names its row.
pugi::xml_node AddRowHead(pugi::xml_node row, std::string_view text);

/// @return the verdict's class in the style sheet: "pass", "known-failure", "not-reached" ...
std::string ClassOf(result::Verdict verdict);

}  // namespace rig::html
