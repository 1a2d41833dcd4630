#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace model {

/// An XML element, with text or child elements or neither.
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

/// @return the element on one line, as it is sent
std::string Compact(const Element& element);

/// @return the element as it is saved to a file: each element on a line of its own, indented by 4 blanks per
/// level
std::string Indented(const Element& element);

}  // namespace model
