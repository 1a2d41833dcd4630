#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace rig {

/// Finds where the XML document that the text starts with is over: a document ends where its root element
/// does. For texts whose announced length cannot be trusted. Only the nesting is looked at, not whether the
/// document is well-formed.
/// @return the number of bytes up to and including the root element's last one; nothing where it is not over
std::optional<std::size_t> DocumentEnd(const std::string& text);

/// @return the byte behind the tag that starts at `at`; npos where it is not over. A '>' in quotes is a
/// value's.
std::size_t BehindTag(const std::string& text, std::size_t at);

}  // namespace rig
