#include "rig/dvr/dialogue/MessageRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

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

void CheckAttributes(const Message& message, const protocol::MessageKind& kind) {
    for (const char* name : kind.required) {
        if (!message.Find(name)) {
            throw Breach(fmt::format("{} without its attribute '{}'", message.Name(), name));
        }
    }
    std::vector<std::string> seen;
    for (const pugi::xml_attribute attribute : message.Root().attributes()) {
        const std::string name = attribute.name();
        if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
            throw Breach(message.Name() + " with the attribute " + Quoted(name) + " twice");
        }
        seen.push_back(name);
        if (!protocol::HasAttribute(kind, name)) {
            throw Breach(message.Name() + " with an unknown attribute " + Quoted(name));
        }
    }
}

}  // namespace

void CheckMessage(const Message& message, int dialect) {
    const protocol::MessageKind* const kind =
        protocol::Find(dialect, protocol::Sender::Harness, message.Name());
    if (kind == nullptr) {
        throw Breach("an unknown message, " + Quoted(message.Name()));
    }
    CheckVersion(message, dialect);
    CheckAttributes(message, *kind);
    if (*kind->children == '\0' && message.Root().first_child()) {
        throw Breach(message.Name() + " with content in 'msg'");
    }
}

}  // namespace rig::dvr
