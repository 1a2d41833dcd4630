#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace rig::dvr {

/// Finds the end of the XML document that the text starts with: a document ends where its root element does.
/// For texts whose announced length cannot be trusted. Checks only the nesting, not whether the document is
/// well-formed.
/// @return the number of bytes up to and including the root element's last one; nothing if it does not end
std::optional<std::size_t> DocumentEnd(const std::string& text);

/// @return the position after the tag that starts at `at`; npos if it does not end. A '>' in quotes belongs
/// to a value.
std::size_t BehindTag(const std::string& text, std::size_t at);

}  // namespace rig::dvr
