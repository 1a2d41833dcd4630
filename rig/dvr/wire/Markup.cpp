#include "rig/dvr/wire/Markup.h"

#include <algorithm>

namespace rig::dvr {
namespace {

constexpr const char* kBlanks = " \t\r\n";

bool StartsAt(const std::string& text, std::size_t at, const char* start) {
    return text.compare(at, std::char_traits<char>::length(start), start) == 0;
}

// Each EndOf function returns the position after the last byte of what it finds; npos if that has no end.

std::size_t EndOf(const char* last, const std::string& text, std::size_t at) {
    const std::size_t found = text.find(last, at);
    return found == std::string::npos ? found : found + std::char_traits<char>::length(last);
}

/// @param at  where the tag starts. A '>' in quotes belongs to a value.
std::size_t EndOfTag(const std::string& text, std::size_t at) {
    char quote = '\0';
    for (; at < text.size(); ++at) {
        if (quote != '\0') {
            quote = text[at] == quote ? '\0' : quote;
        } else if (text[at] == '"' || text[at] == '\'') {
            quote = text[at];
        } else if (text[at] == '>') {
            return at + 1;
        }
    }
    return std::string::npos;
}

std::size_t EndOfMarkup(const std::string& text, std::size_t at) {
    if (StartsAt(text, at, "<!--")) {
        return EndOf("-->", text, at + 4);
    }
    if (StartsAt(text, at, "<![CDATA[")) {
        return EndOf("]]>", text, at);
    }
    return StartsAt(text, at, "<?") ? EndOf("?>", text, at) : EndOfTag(text, at);
}

void AppendSkeleton(std::string& skeleton, const pugi::xml_node& node) {
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
        AppendSkeleton(skeleton, child);
    }
    skeleton += std::string("</") + node.name() + ">";
}

/// @return the tag without its values
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

std::optional<std::size_t> DocumentEnd(const std::string& text) {
    std::size_t depth = 0;  // of open elements
    for (std::size_t at = text.find('<'); at != std::string::npos;) {
        const std::size_t end = EndOfMarkup(text, at);
        if (end == std::string::npos) {
            return std::nullopt;
        }
        const bool isElement = !StartsAt(text, at, "<!") && !StartsAt(text, at, "<?");
        const bool closes = StartsAt(text, at, "</");
        const bool isEmpty = text[end - 2] == '/';
        if (isElement && !closes && !isEmpty) {
            ++depth;
        } else if (closes && depth > 0) {
            --depth;
        }
        if (isElement && depth == 0) {
            return end;
        }
        at = text.find('<', end);
    }
    return std::nullopt;
}

std::string SkeletonOf(const pugi::xml_document& document) {
    std::string skeleton;
    for (const pugi::xml_node child : document.children()) {
        AppendSkeleton(skeleton, child);
    }
    return skeleton;
}

std::string SkeletonOf(const std::string& text) {
    std::string skeleton;
    std::string tag;  // the last one
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '<') {
            const std::size_t end = std::min(EndOfTag(text, at), text.size());
            tag = BareTag(text.substr(at, end - at));
            skeleton += tag;
            at = end;
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
