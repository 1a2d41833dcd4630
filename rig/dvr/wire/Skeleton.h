#pragma once

#include <pugixml.hpp>
#include <string>

namespace rig::dvr {

/// The layout of a document without its values: `<msg req="" file=""/>`. A compactly printed text has the
/// same skeleton as the document read from it.
/// @return the skeleton that compact printing gives
std::string SkeletonOf(const pugi::xml_document& document);

/// @return the skeleton of a text as it is. Leaves out text between tags unless it is all blanks, and the one
/// blank allowed before "/>".
std::string SkeletonOf(const std::string& text);

}  // namespace rig::dvr
