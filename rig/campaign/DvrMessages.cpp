#include "rig/campaign/DvrMessages.h"

#include <algorithm>
#include <charconv>
#include <pugixml.hpp>

#include "rig/judge/Signs.h"

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

void DvrMessages::Add(const LogLine& line) {
    const judge::Sign sign = judge::SignOf(line.text);
    const std::string_view detail = judge::Behind(sign, line.text);
    if (sign == judge::Sign::Expecting) {
        expected_ = 0;
        std::from_chars(detail.data(), detail.data() + detail.size(), expected_);
        text_.clear();
    } else if (sign == judge::Sign::Incoming && detail.find(':') != std::string_view::npos) {
        text_ += Unescaped(detail.substr(detail.find(':') + 1));
        if (text_.size() >= expected_) {
            Give();
        }
    }
}

void DvrMessages::Give() {
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_string(text_.c_str());
    text_.clear();
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
