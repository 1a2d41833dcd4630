#include "rig/campaign/evidence/DvrMessages.h"

#include <algorithm>
#include <pugixml.hpp>

namespace rig::campaign {
namespace {

void AddField(std::vector<std::string>& fields, const std::string& field) {
    if (std::find(fields.begin(), fields.end(), field) == fields.end()) {
        fields.push_back(field);
    }
}

void AddChildren(std::vector<std::string>& fields, const pugi::xml_node& parent, const std::string& path) {
    for (const pugi::xml_node& child : parent.children()) {
        if (child.type() == pugi::node_element) {
            AddField(fields, path + child.name());
            AddChildren(fields, child, path + child.name() + "/");
        }
    }
}

}  // namespace

DvrMessage DvrMessageOf(const log::Message& message) {
    DvrMessage counted{message.name, {}};
    for (const pugi::xml_attribute& attribute : message.root.attributes()) {
        if (std::string_view(attribute.name()) != "req") {
            AddField(counted.fields, attribute.name());
        }
    }
    AddChildren(counted.fields, message.root, "");
    return counted;
}

}  // namespace rig::campaign
