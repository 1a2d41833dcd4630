#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace rig::log {

/// What is wrong with a text as an XML document.
struct XmlFault {
    std::string words;       // the parser's
    std::size_t offset = 0;  // of the byte at which it stops, or the end if something is not closed there
    bool isEncodingOnly = false;  // it is well formed, were it not for bytes that are not of its encoding
};

/// Holds a text against the rules of XML 1.0, which neither the harness's parser nor ours enforces in full.
/// An encoding that is declared, but not known here, is no fault.
/// @param text  without the NULs at its end
std::optional<XmlFault> FaultIn(const std::string& text);

/// @return whether it has a fault other than its encoding
bool IsMalformed(const std::string& text);

}  // namespace rig::log
