#include "rig/campaign/evidence/DvrMessages.h"

#include <algorithm>
#include <pugixml.hpp>

#include "rig/log/Numbers.h"
#include "rig/log/Signs.h"

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

void DvrMessages::Add(const log::LogLine& line) {
    const log::Sign sign = log::SignOf(line.text);
    const std::string_view detail = log::Behind(sign, line.text);
    if (sign == log::Sign::Expecting) {
        incoming_.Expect(log::NumberIn(detail), line.time);
    } else if (sign == log::Sign::Incoming && incoming_.Add(detail) && incoming_.IsWhole()) {
        Give();
    }
}

void DvrMessages::Give() {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_string(incoming_.Text().c_str());
    const pugi::xml_node root = document.child("msg");
    if (!parsed || !root) {
        return;
    }
    DvrMessage message{root.attribute("req").value(), {}};
    for (const pugi::xml_attribute& attribute : root.attributes()) {
        if (std::string_view(attribute.name()) != "req") {
            AddField(message.fields, attribute.name());
        }
    }
    AddChildren(message.fields, root, "");
    take_(message);
}

}  // namespace rig::campaign
