#include "rig/log/Xml.h"

#include <expat.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace rig::log {
namespace {

using Parser = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

constexpr const char* kAnyBytes = "ISO-8859-1";  // in which every byte is a character

/// @param encoding  overrides what the document declares; null if nothing does
std::optional<XmlFault> FaultAs(const char* encoding, const std::string& text, XML_Error& error) {
    const Parser parser(XML_ParserCreate(encoding), &XML_ParserFree);
    const std::size_t size = std::strlen(text.c_str());
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(size), XML_TRUE) == XML_STATUS_OK) {
        return std::nullopt;
    }
    error = XML_GetErrorCode(parser.get());
    const bool isUnclosed = error == XML_ERROR_UNCLOSED_TOKEN || error == XML_ERROR_UNCLOSED_CDATA_SECTION;
    const auto stop = std::max(XML_GetCurrentByteIndex(parser.get()), XML_Index{0});  // -1 without text
    return XmlFault{XML_ErrorString(error), isUnclosed ? size : static_cast<std::size_t>(stop), false};
}

}  // namespace

std::optional<XmlFault> FaultIn(const std::string& text) {
    XML_Error error = XML_ERROR_NONE;
    auto fault = FaultAs(nullptr, text, error);
    if (!fault) {
        return std::nullopt;
    }
    const bool isUnknown = error == XML_ERROR_UNKNOWN_ENCODING;
    auto other = FaultAs(kAnyBytes, text, error);
    if (isUnknown) {
        return other;
    }
    fault->isEncodingOnly = !other;
    return fault;
}

bool IsMalformed(const std::string& text) {
    const auto fault = FaultIn(text);
    return fault && !fault->isEncodingOnly;
}

}  // namespace rig::log
