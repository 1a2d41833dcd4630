#include "rig/log/HarnessText.h"

#include <algorithm>

#include "rig/base/Affix.h"

namespace rig::log {
namespace {

bool IsBlank(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

bool IsAllBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsBlank);
}

/// @return how long the text is up to and including the end; all of it if that does not occur
std::size_t Through(std::string_view text, std::string_view end) {
    const std::size_t at = text.find(end);
    return at == std::string_view::npos ? text.size() : at + end.size();
}

/// @return the length of the tag, comment or section that the text begins with
std::size_t MarkupLength(std::string_view text) {
    if (StartsWith(text, "<!--")) {
        return Through(text, "-->");
    }
    if (StartsWith(text, "<![CDATA[")) {
        return Through(text, "]]>");
    }
    char quote = '\0';
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (quote == '\0' && text[at] == '>') {
            return at + 1;
        }
        if (quote == '\0' && (text[at] == '"' || text[at] == '\'')) {
            quote = text[at];
        } else if (text[at] == quote) {
            quote = '\0';
        }
    }
    return text.size();
}

/// @return whether some text may have blanks to drop or to condense, as few have
bool MayHaveBlanks(std::string_view document) {
    char before = '>';
    for (const char byte : document) {
        const bool isAfterMarkupOrBlank = before == '>' || before == ' ';
        if ((IsBlank(byte) && (byte != ' ' || isAfterMarkupOrBlank)) || (byte == '<' && before == ' ')) {
            return true;
        }
        before = byte;
    }
    return before == ' ';
}

void AppendCondensed(std::string& condensed, std::string_view text) {
    bool isBlankDue = false;
    bool isEmpty = true;
    for (const char byte : text) {
        if (IsBlank(byte)) {
            isBlankDue = !isEmpty;
            continue;
        }
        if (isBlankDue) {
            condensed += ' ';
        }
        condensed += byte;
        isBlankDue = false;
        isEmpty = false;
    }
}

}  // namespace

std::string Condensed(std::string_view document) {
    if (!MayHaveBlanks(document)) {
        return std::string(document);
    }
    std::string condensed;
    condensed.reserve(document.size());
    while (!document.empty()) {
        const bool isMarkup = document.front() == '<';
        const std::size_t length =
            isMarkup ? MarkupLength(document) : std::min(document.find('<'), document.size());
        if (isMarkup) {
            condensed += document.substr(0, length);
        } else {
            AppendCondensed(condensed, document.substr(0, length));
        }
        document.remove_prefix(length);
    }
    return condensed;
}

const char* TextOf(const pugi::xml_node& element) {
    pugi::xml_node first = element.first_child();
    while (first.type() == pugi::node_pcdata && IsAllBlank(first.value())) {  // though by references
        first = first.next_sibling();
    }
    const bool isText = first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata;
    return isText ? first.value() : "";
}

}  // namespace rig::log
