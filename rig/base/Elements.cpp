#include "rig/base/Elements.h"

#include "rig/base/ValidText.h"

namespace rig {

pugi::xml_node Add(pugi::xml_node parent, const char* element, std::string_view text,
                   std::string_view cssClass) {
    pugi::xml_node node = parent.append_child(element);
    if (!cssClass.empty()) {
        Set(node, "class", cssClass);
    }
    AddText(node, text);
    return node;
}

void AddText(pugi::xml_node parent, std::string_view text) {
    if (!text.empty()) {
        parent.append_child(pugi::node_pcdata).set_value(ValidText(text).c_str());
    }
}

void Set(pugi::xml_node node, const char* attribute, std::string_view value) {
    node.append_attribute(attribute) = ValidText(value).c_str();
}

}  // namespace rig
