#pragma once

#include <pugixml.hpp>
#include <string_view>

// Builds XML and HTML documents from any bytes. What a document may not contain is replaced (see ValidText);
// what needs escaping is escaped when the document is written.

namespace rig {

/// Adds an element after the parent's content. @param text  its content, none if empty
pugi::xml_node Add(pugi::xml_node parent, const char* element, std::string_view text = {},
                   std::string_view cssClass = {});

/// Adds text after the element's content.
void AddText(pugi::xml_node parent, std::string_view text);

/// Sets an attribute, whatever bytes the value holds.
void Set(pugi::xml_node node, const char* attribute, std::string_view value);

}  // namespace rig
