#pragma once

#include <pugixml.hpp>
#include <string>

namespace rig {

/// How a document is laid out, with its values left out: `<msg req="" file=""/>`. What was printed compactly
/// has the same skeleton as the document that was read from it.
/// @return the skeleton that compact printing gives
std::string SkeletonOf(const pugi::xml_document& document);

/// @return the skeleton of a text as it is. Text between tags is left out unless it is all blanks; the one
/// blank that may stand before "/>" is left out too.
std::string SkeletonOf(const std::string& text);

}  // namespace rig
