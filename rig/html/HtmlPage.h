#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "rig/base/Elements.h"

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

    /// Shows how what the page tells of came out, as a coloured band around the heading. @param name see
    /// Looks
    void SetOutcome(std::string_view name);

    /// Has browsers load the page again and again, and says so: for a page that is written anew until what it
    /// tells of is over. @param progress how far that is
    void Renew(std::string_view progress);

    /// @return the page as text, which browsers and XML readers read alike
    std::string Text();

 private:
    pugi::xml_document document_;
    pugi::xml_node main_;
    pugi::xml_node heading_;
};

/// Adds a link. @param target as in href: "#id", or a path relative to the page
pugi::xml_node AddLink(pugi::xml_node parent, std::string_view target, std::string_view text);

/// Adds a field of a form to its label.
pugi::xml_node AddInput(pugi::xml_node label, const char* type, const char* name);

/// Adds a term and its value to a "dl"; nothing if the value is not known.
void AddFact(pugi::xml_node list, std::string_view name, std::string_view value);

}  // namespace rig::html
