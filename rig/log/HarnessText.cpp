#include "rig/log/HarnessText.h"

#include <tinyxml.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "rig/base/Affix.h"
#include "rig/base/Printable.h"

namespace rig::log {
namespace {

constexpr unsigned int kWithAllNodes =
    (pugi::parse_default | pugi::parse_comments | pugi::parse_pi) & ~pugi::parse_eol;

bool IsBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

bool IsReference(std::string_view text) {
    constexpr std::array kReferences = {"&lt;", "&gt;", "&amp;", "&quot;", "&apos;"};
    return std::any_of(kReferences.begin(), kReferences.end(),
                       [text](const char* reference) { return StartsWith(text, reference); });
}

/// @return whether all parsers find the same texts in the document, as in most: it is UTF-8, begins with
/// markup, has no blanks that could be dropped or condensed, and no references but the usual ones
bool ReadsAlikeEverywhere(std::string_view document) {
    if (!StartsWith(document, "<") || !IsUtf8(document)) {
        return false;
    }
    for (std::size_t at = 1; at < document.size(); ++at) {
        const char byte = document[at];
        const char before = document[at - 1];
        const bool isAfterMarkupOrBlank = before == '>' || before == ' ';
        if ((IsBlank(byte) && (byte != ' ' || isAfterMarkupOrBlank)) || (byte == '<' && before == ' ') ||
            (byte == '&' && !IsReference(document.substr(at)))) {
            return false;
        }
    }
    return document.back() != ' ';
}

/// @return the document as the harness's own library reads and writes it; empty if it does not read it
std::string ReadByTheHarness(const std::string& text) {
    TiXmlDocument document;
    document.Parse(text.c_str());
    if (document.Error()) {
        return "";
    }
    TiXmlPrinter printer;
    printer.SetStreamPrinting();
    document.Accept(&printer);
    return printer.Str();
}

}  // namespace

bool LoadAsTheHarness(const std::string& text, pugi::xml_document& document) {
    return (ReadsAlikeEverywhere(text) && document.load_string(text.c_str(), kWithAllNodes)) ||
           document.load_string(ReadByTheHarness(text).c_str(), kWithAllNodes);
}

const char* TextOf(const pugi::xml_node& element) {
    const pugi::xml_node first = element.first_child();
    const bool isText = first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata;
    return isText ? first.value() : "";
}

}  // namespace rig::log
