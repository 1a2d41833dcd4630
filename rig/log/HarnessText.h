#pragma once

#include <pugixml.hpp>
#include <string>

namespace rig::log {

// Documents as the harness's parser hands them to the harness, which ours would not: white space at the ends
// of a text is dropped, and condensed to one blank within; a character reference may become one byte; what is
// not well formed may be read all the same.

/// Parses a document so that nodes, attributes and texts are those that the harness finds.
/// @param text  taken up to its first NUL, as the harness takes it
/// @return whether the harness can parse it, as far as parsers agree on that
bool LoadAsTheHarness(const std::string& text, pugi::xml_document& document);

/// @return the text that an element of such a document begins with, as the harness takes no other; empty if
/// it
///         begins with something else, be it a comment
const char* TextOf(const pugi::xml_node& element);

}  // namespace rig::log
