#include "rig/dvr/wire/Message.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/dvr/wire/Style.h"

namespace rig::dvr {
namespace {

struct StringWriter : pugi::xml_writer {
    std::string text;
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
};

bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

/// A single blank between other characters is safe in compact text. '>' is always markup here: in values it
/// is printed as a reference.
bool NeedsReference(const std::string& text, std::size_t index) {
    if (!IsBlank(text[index])) {
        return false;
    }
    const char before = index > 0 ? text[index - 1] : '>';
    const char after = index + 1 < text.size() ? text[index + 1] : '<';
    return text[index] != ' ' || before == '>' || IsBlank(before) || after == '<';
}

/// Parses one whole document. @return what is wrong with the text, empty if nothing is
std::string ParseWhole(pugi::xml_document& document, const std::string& text) {
    // As a fragment, so that anything next to the top-level element is seen and can be refused.
    constexpr unsigned int kFlags =
        pugi::parse_default | pugi::parse_fragment | pugi::parse_ws_pcdata_single | pugi::parse_doctype;
    if (text.find('\0') != std::string::npos) {
        return "a NUL byte";
    }
    const auto result = document.load_buffer(text.data(), text.size(), kFlags, pugi::encoding_utf8);
    if (!result) {
        return fmt::format("{} at byte {}", result.description(), result.offset);
    }
    std::size_t elements = 0;
    for (const pugi::xml_node node : document.children()) {
        const std::string beside = node.value();
        if (node.type() == pugi::node_doctype) {
            return "a document type";
        }
        elements += node.type() == pugi::node_element ? 1U : 0U;
        if (!std::all_of(beside.begin(), beside.end(), IsBlank)) {
            return "text outside the document's element";
        }
    }
    return elements == 1 ? "" : std::to_string(elements) + " top-level elements";
}

}  // namespace

Message::Message(const std::string& name) {
    document_.append_child("msg");
    Set("req", name);
}

Message Message::Parse(const std::string& text) {
    Message message;
    const std::string error = ParseWhole(message.document_, text);
    if (!error.empty()) {
        throw Breach(fmt::format("text that is not one XML document ({}): '{}'", error, Excerpt(text)));
    }
    const pugi::xml_node root = message.Root();
    if (!root) {
        throw Breach("a document without a top-level 'msg': '" + Excerpt(text) + "'");
    }
    if (!root.attribute("req")) {
        throw Breach("a message without 'req': '" + Excerpt(text) + "'");
    }
    return message;
}

Message Message::Copy() const {
    Message copy;
    copy.document_.reset(document_);
    return copy;
}

std::string Message::Name() const {
    return Get("req");
}

Message& Message::Set(const char* attribute, const std::string& value) {
    Root().append_attribute(attribute).set_value(value.c_str());
    return *this;
}

std::optional<std::string> Message::Find(const char* attribute) const {
    const pugi::xml_attribute found = Root().attribute(attribute);
    return found ? std::optional<std::string>(found.value()) : std::nullopt;
}

std::string Message::Get(const char* attribute) const {
    return Root().attribute(attribute).value();
}

pugi::xml_node Message::Root() const {
    return document_.child("msg");
}

std::string Message::Text() const {
    return Print(document_);
}

std::string Message::Text(const Style& style) const {
    return style.IsPlain() ? Text() : style.Print(document_);
}

std::string TextOf(const pugi::xml_node& element) {
    std::string text;
    for (const pugi::xml_node piece : element.children()) {
        text += piece.value();  // which an element does not have
    }
    return text;
}

std::string Print(const pugi::xml_document& document) {
    StringWriter writer;
    document.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    std::string safe;
    safe.reserve(writer.text.size());
    for (std::size_t index = 0; index < writer.text.size(); ++index) {
        if (NeedsReference(writer.text, index)) {
            safe += fmt::format("&#{:d};", writer.text[index]);
        } else {
            safe += writer.text[index];
        }
    }
    return safe;
}

bool IsDocument(const std::string& text) {
    pugi::xml_document document;
    return ParseWhole(document, text).empty();
}

}  // namespace rig::dvr
