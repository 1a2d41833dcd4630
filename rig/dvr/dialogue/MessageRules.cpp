#include "rig/dvr/dialogue/MessageRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"
#include "rig/protocol/Catalogue.h"

namespace rig::dvr {
namespace {

/// Throws Breach unless the message carries the dialect's version, or none if the dialect has none.
void CheckVersion(const Message& message, int dialect) {
    const char* const expected = protocol::VersionOf(dialect);
    const auto version = message.Find("protocolVersion");
    if (expected == nullptr) {
        if (version) {
            throw Breach(fmt::format("{} with a protocolVersion, {}, which protocol 1.0 does not have",
                                     message.Name(), Quoted(*version)));
        }
    } else if (!version) {
        throw Breach(message.Name() + " without protocolVersion");
    } else if (*version != expected) {
        throw Breach(fmt::format("{} with protocolVersion {} instead of '{}'", message.Name(),
                                 Quoted(*version), expected));
    }
}

void CheckAttributes(const Message& message, const protocol::MessageKind& kind, bool allowsOthers) {
    for (const std::string_view name : kind.required) {
        if (!message.Find(std::string(name).c_str())) {
            throw Breach(fmt::format("{} without its attribute '{}'", message.Name(), name));
        }
    }
    std::set<std::string> seen;
    for (const pugi::xml_attribute attribute : message.Root().attributes()) {
        const std::string name = attribute.name();
        if (!seen.insert(name).second) {
            throw Breach(message.Name() + " with the attribute '" + Excerpt(name) + "' twice");
        }
        if (!allowsOthers && !protocol::HasAttribute(kind, name)) {
            throw Breach(message.Name() + " with an unknown attribute " + Quoted(name));
        }
    }
}

/// @return whether there is more in an element than white space
bool HasContent(const pugi::xml_node& element) {
    const auto isContent = [](const pugi::xml_node& child) {
        const std::string_view text = child.value();
        return child.type() == pugi::node_element || child.type() == pugi::node_cdata ||
               text.find_first_not_of(" \t\r\n") != std::string_view::npos;
    };
    return std::any_of(element.begin(), element.end(), isContent);
}

}  // namespace

void CheckMessage(const Message& message, int dialect, bool allowsOthers) {
    const protocol::MessageKind* const kind =
        protocol::Find(dialect, protocol::Sender::Harness, message.Name());
    if (kind == nullptr) {
        throw Breach("an unknown message, '" + Excerpt(message.Name()) + "'");
    }
    CheckVersion(message, dialect);
    CheckAttributes(message, *kind, allowsOthers);
    if (*kind->children == '\0' && HasContent(message.Root())) {
        throw Breach(message.Name() + " with content in 'msg'");
    }
}

}  // namespace rig::dvr
