#pragma once

#include <optional>
#include <pugixml.hpp>
#include <string>

namespace rig::dvr {

class Style;

/// One message of the protocol: an XML document with one top-level element `msg`, whose attribute `req` names
/// it.
///
/// Kept as a document until it is sent, so that whoever sends it can still change it.
class Message {
 public:
    /// Starts a message of ours that has only its name.
    explicit Message(const std::string& name);

    /// Reads the text of one frame. Throws Breach unless it is one well-formed document with nothing before
    /// or after it, no document type, its top-level element is `msg` and that element has `req`.
    static Message Parse(const std::string& text);

    /// @return a copy of the message, with all changes made to it
    Message Copy() const;

    std::string Name() const;

    /// Adds an attribute after the existing ones. @return this message
    Message& Set(const char* attribute, const std::string& value);

    /// @return the attribute's value; nothing if it is missing
    std::optional<std::string> Find(const char* attribute) const;

    /// @return the attribute's value, empty if it is missing
    std::string Get(const char* attribute) const;

    /// The element `msg`, for the children of a message. It belongs to this message.
    pugi::xml_node Root() const;

    /// @return the text as it goes into a frame
    std::string Text() const;

    /// @return the same in a style
    std::string Text(const Style& style) const;

 private:
    Message() = default;

    pugi::xml_document document_;
};

/// @return the whole text in an element, however many pieces comments and CDATA sections make of it
std::string TextOf(const pugi::xml_node& element);

/// @return the document printed without indentation, line breaks or declaration. Blanks that a reader may
///         merge or trim (leading, trailing or in a row) are written as references, so that names keep them.
std::string Print(const pugi::xml_document& document);

/// Parses a document that travels inside a message as escaped text.
/// @return whether it is one well-formed document with exactly one top-level element
bool IsDocument(const std::string& text);

}  // namespace rig::dvr
