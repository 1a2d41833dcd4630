#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace rig::log {

// Text as the harness's parser hands it to the harness, which another parser would not: white space at the
// ends of a text is dropped, and condensed to one blank within. Blanks that are written as references stay,
// and so does white space in attributes and in CDATA sections. A comment or a CDATA section ends a text, and
// the harness takes only what an element begins with.

/// How to parse a document so that nodes and attributes are those that the harness finds.
constexpr unsigned int kAsTheHarness = (pugi::parse_default | pugi::parse_comments | pugi::parse_pi) &
                                       ~(pugi::parse_wconv_attribute | pugi::parse_eol);

/// @return the document with its texts condensed; as it is where it is not well formed
std::string Condensed(std::string_view document);

/// @return the text that an element of a condensed document begins with; empty if it begins with something
/// else
const char* TextOf(const pugi::xml_node& element);

}  // namespace rig::log
