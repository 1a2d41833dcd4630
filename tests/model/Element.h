#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace model {

/// An XML element, with a text or with child elements or with neither.
struct Element {
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::optional<std::string> text;
    std::vector<Element> children;

    /// @return the value of the first attribute of that name
    std::optional<std::string> Attribute(const std::string& name) const;
    /// @return the first child of that name; null if there is none
    const Element* Child(const std::string& name) const;
};

/// @return the element in one line, as it travels
std::string Compact(const Element& element);

/// @return the element as it is saved to a file: each element on a line of its own, indented by 4 blanks a
/// level
std::string Indented(const Element& element);

}  // namespace model
