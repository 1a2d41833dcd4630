#pragma once

#include <cstddef>
#include <optional>
#include <pugixml.hpp>
#include <string>

// What a parsed document no longer shows: where its text ends, and how it was printed.

namespace rig::dvr {

/// Finds the end of the XML document that the text starts with, which is the end of its root element. For
/// texts whose announced length cannot be trusted. Checks only the nesting, not whether the document is
/// well-formed.
/// @return the number of bytes up to the end of the root element; nothing if it does not end
std::optional<std::size_t> DocumentEnd(const std::string& text);

/// The layout of a document without its values: `<msg req="" file=""/>`. A compactly printed text has the
/// same skeleton as the document read from it.
/// @return the skeleton of the document, printed compactly
std::string SkeletonOf(const pugi::xml_document& document);

/// @return the skeleton of a text as it is. Leaves out text between tags unless it is all blanks, and the one
/// blank allowed before "/>".
std::string SkeletonOf(const std::string& text);

}  // namespace rig::dvr
