#include "rig/dvr/wire/Style.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "rig/dvr/Choice.h"

namespace rig::dvr {
namespace {

struct MannerKind {
    Style::Manner manner;
    const char* name;
    const char* words;
};

constexpr std::array kManners = {
    MannerKind{Style::Indented, "indented", "every element, and every text, on a line of its own"},
    MannerKind{Style::Crlf, "crlf", "lines that end with carriage return and newline"},
    MannerKind{Style::Declaration, "declaration", "an XML declaration before the document"},
    MannerKind{Style::ByteOrderMark, "byte-order-mark", "the byte order mark of UTF-8 before everything"},
    MannerKind{Style::SingleQuotes, "single-quotes", "attributes in single quotes"},
    MannerKind{Style::Reversed, "reversed", "attributes in the opposite order"},
    MannerKind{Style::Unknown, "unknown-attributes", "an attribute that the protocol does not know"},
    MannerKind{Style::Comments, "comments", "comments before, in and after msg, where none ends the harness"},
    MannerKind{Style::References, "references",
               "character references for all ASCII characters but letters and digits"},
    MannerKind{Style::Cdata, "cdata", "texts as CDATA sections"},
    MannerKind{Style::LongForm, "long-form", "empty elements with an end tag"},
};

bool IsBlankByte(char byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// @return whether a reader may drop or change the byte unless it is written as a reference
bool IsFragile(const std::string& value, std::size_t at, bool isText) {
    if (!IsBlankByte(value[at])) {
        return false;
    }
    const bool isAtEnd = at == 0 || at + 1 == value.size();
    return value[at] != ' ' || (isText && (isAtEnd || IsBlankByte(value[at - 1])));
}

bool IsLeaf(const pugi::xml_node& element) {
    return element.first_child().type() == pugi::node_pcdata;
}

}  // namespace

void Style::AddManner(const std::string& name) {
    const auto named = Choose("--style", ListStyles(), name);
    for (std::size_t row = 0; row < kManners.size(); ++row) {
        manners_ |= !named || named == row ? kManners[row].manner : 0U;
    }
}

std::string Style::Print(const pugi::xml_document& document) const {
    std::string text = Has(ByteOrderMark) ? "\xef\xbb\xbf" : "";
    if (Has(Declaration)) {
        text += R"(<?xml version="1.0" encoding="UTF-8"?>)";
        BreakLine(text, 0);
    }
    text += Has(Comments) ? "<!-- begin -->" : "";
    PrintElement(text, document.first_child(), 0);
    BreakLine(text, 0);
    text += Has(Comments) ? "<!-- end -->" : "";
    return text;
}

void Style::PrintElement(std::string& text, const pugi::xml_node& element, std::size_t depth) const {
    text += std::string("<") + element.name();
    PrintAttributes(text, element);
    const bool hasComment = Has(Comments) && depth == 0;
    if (!element.first_child() && !hasComment) {
        text += Has(LongForm) ? fmt::format("></{}>", element.name()) : "/>";
        return;
    }
    text += hasComment ? "><!-- message -->" : ">";
    if (IsLeaf(element)) {
        PrintText(text, element.text().get(), depth + 1);
    } else {
        for (const pugi::xml_node child : element.children()) {
            BreakLine(text, depth + 1);
            PrintElement(text, child, depth + 1);
        }
    }
    BreakLine(text, depth);
    text += fmt::format("</{}>", element.name());
}

void Style::PrintAttributes(std::string& text, const pugi::xml_node& element) const {
    std::vector<std::string> attributes;
    const char quote = Has(SingleQuotes) ? '\'' : '"';
    for (const pugi::xml_attribute attribute : element.attributes()) {
        attributes.push_back(
            fmt::format(" {}={}{}{}", attribute.name(), quote, Escaped(attribute.value(), false), quote));
    }
    if (Has(Unknown)) {
        attributes.push_back(fmt::format(" vendor={}none{}", quote, quote));
    }
    if (Has(Reversed)) {
        std::reverse(attributes.begin(), attributes.end());
    }
    for (const std::string& attribute : attributes) {
        text += attribute;
    }
}

void Style::PrintText(std::string& text, const std::string& value, std::size_t depth) const {
    const bool isCdata = Has(Cdata) && value.find("]]>") == std::string::npos;
    BreakLine(text, depth);
    text += isCdata ? fmt::format("<![CDATA[{}]]>", value) : Escaped(value, true);
}

void Style::BreakLine(std::string& text, std::size_t depth) const {
    if (Has(Indented)) {
        text += (Has(Crlf) ? "\r\n" : "\n") + std::string(depth, '\t');
    } else if (Has(Crlf) && depth == 0) {
        text += "\r\n";
    }
}

std::string Style::Escaped(const std::string& value, bool isText) const {
    std::string escaped;
    for (std::size_t at = 0; at < value.size(); ++at) {
        const auto byte = static_cast<unsigned char>(value[at]);
        const bool isMarkup = byte == '<' || byte == '>' || byte == '&' || byte == '"' || byte == '\'';
        const bool isReferred = Has(References) && byte < 0x80 && std::isalnum(byte) == 0;
        if (isMarkup || isReferred || IsFragile(value, at, isText)) {
            escaped += fmt::format("&#{:d};", byte);
        } else {
            escaped += value[at];
        }
    }
    return escaped;
}

Listing ListStyles() {
    Listing listing{{"style", "what the DVR writes"}, {}};
    for (const MannerKind& kind : kManners) {
        listing.rows.push_back({kind.name, kind.words});
    }
    return listing;
}

}  // namespace rig::dvr
