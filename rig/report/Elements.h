#pragma once

#include <pugixml.hpp>
#include <string_view>

// Building documents of XML and HTML: any bytes may be given. What no document may hold is replaced (see
// ValidText); what must be escaped is escaped when the document is written.

namespace rig::report {

/// Adds an element behind the others of its parent. @param text its content, none if empty
pugi::xml_node Add(pugi::xml_node parent, const char* element, std::string_view text = {},
                   std::string_view cssClass = {});

/// Adds text behind what the element holds already.
void AddText(pugi::xml_node parent, std::string_view text);

/// Sets an attribute, whatever bytes the value holds.
void Set(pugi::xml_node node, const char* attribute, std::string_view value);

}  // namespace rig::report
