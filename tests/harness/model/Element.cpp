#include "tests/harness/model/Element.h"

#include "tests/support/Escaped.h"

namespace model {
namespace {

std::string Start(const Element& element) {
    std::string start = "<" + element.name;
    for (const auto& [name, value] : element.attributes) {
        const char quote = value.find('"') == std::string::npos ? '"' : '\'';
        start += " " + name + "=" + quote + Escaped(value) + quote;
    }
    return start;
}

std::string Printed(const Element& element, const std::string& newline) {
    std::string printed = Start(element);
    if (element.text) {
        return printed + ">" + Escaped(*element.text) + "</" + element.name + ">";
    }
    if (element.children.empty()) {
        return printed + " />";
    }
    printed += ">";
    for (const Element& child : element.children) {
        const std::string deeper = newline.empty() ? "" : newline + "    ";
        printed += deeper + Printed(child, deeper);
    }
    return printed + newline + "</" + element.name + ">";
}

}  // namespace

std::optional<std::string> Element::Attribute(const std::string& wanted) const {
    for (const auto& [attribute, value] : attributes) {
        if (attribute == wanted) {
            return value;
        }
    }
    return std::nullopt;
}

const Element* Element::Child(const std::string& wanted) const {
    for (const Element& child : children) {
        if (child.name == wanted) {
            return &child;
        }
    }
    return nullptr;
}

std::string Compact(const Element& element) {
    return Printed(element, "");
}

std::string Indented(const Element& element) {
    return Printed(element, "\n") + "\n";
}

}  // namespace model
