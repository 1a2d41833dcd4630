#include "rig/dvr/wire/Skeleton.h"

#include <algorithm>

#include "rig/dvr/wire/DocumentEnd.h"

namespace rig::dvr {
namespace {

constexpr const char* kBlanks = " \t\r\n";

void Append(std::string& skeleton, const pugi::xml_node& node) {
    if (node.type() != pugi::node_element) {
        return;  // text, or something that a compact document does not have
    }
    skeleton += std::string("<") + node.name();
    for (const pugi::xml_attribute attribute : node.attributes()) {
        skeleton += std::string(" ") + attribute.name() + "=\"\"";
    }
    if (!node.first_child()) {
        skeleton += "/>";
        return;
    }
    skeleton += ">";
    for (const pugi::xml_node child : node.children()) {
        Append(skeleton, child);
    }
    skeleton += std::string("</") + node.name() + ">";
}

/// Removes the values from a tag.
std::string BareTag(const std::string& tag) {
    std::string bare;
    char quote = '\0';
    for (const char byte : tag) {
        if (quote == '\0' && (byte == '"' || byte == '\'')) {
            quote = byte;
            bare += "\"\"";
        } else if (quote == '\0') {
            bare += byte;
        } else if (byte == quote) {
            quote = '\0';
        }
    }
    const std::size_t length = bare.size();
    if (length > 3 && bare.compare(length - 3, 3, " />") == 0 && bare[length - 4] != ' ') {
        bare.erase(length - 3, 1);
    }
    return bare;
}

/// @return whether the text between two tags is the whole content of an element, and so a value
bool IsValue(const std::string& tagBefore, const std::string& text, std::size_t next) {
    return tagBefore.size() > 2 && tagBefore[1] != '/' && tagBefore[tagBefore.size() - 2] != '/' &&
           text.compare(next, 2, "</") == 0;
}

}  // namespace

std::string SkeletonOf(const pugi::xml_document& document) {
    std::string skeleton;
    for (const pugi::xml_node child : document.children()) {
        Append(skeleton, child);
    }
    return skeleton;
}

std::string SkeletonOf(const std::string& text) {
    std::string skeleton;
    std::string tag;  // the last one
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '<') {
            const std::size_t behind = std::min(BehindTag(text, at), text.size());
            tag = BareTag(text.substr(at, behind - at));
            skeleton += tag;
            at = behind;
            continue;
        }
        const std::size_t next = std::min(text.find('<', at), text.size());
        const std::string between = text.substr(at, next - at);
        if (between.find_first_not_of(kBlanks) == std::string::npos && !IsValue(tag, text, next)) {
            skeleton += between;
        }
        at = next;
    }
    return skeleton;
}

}  // namespace rig::dvr
