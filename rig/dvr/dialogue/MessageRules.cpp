#include "rig/dvr/dialogue/MessageRules.h"

#include <algorithm>

#include "rig/base/Printable.h"
#include "rig/dvr/Failure.h"

namespace rig::dvr {
namespace {

bool Contains(const std::vector<const char*>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Throws Breach unless the message carries the dialect's version, or none if the dialect has none.
void CheckVersion(const Message& message, const MessageRules& rules) {
    const auto version = message.Find("protocolVersion");
    if (rules.protocolVersion == nullptr) {
        if (version) {
            throw Breach(message.Name() + " with a protocolVersion, " + Quoted(*version) +
                         ", which protocol 1.0 does not have");
        }
    } else if (!version) {
        throw Breach(message.Name() + " without protocolVersion");
    } else if (*version != rules.protocolVersion) {
        throw Breach(message.Name() + " with protocolVersion " + Quoted(*version) + " instead of '" +
                     rules.protocolVersion + "'");
    }
}

void CheckAttributes(const Message& message, const MessageRule& rule) {
    for (const char* name : rule.required) {
        if (!message.Find(name)) {
            throw Breach(message.Name() + " without its attribute '" + name + "'");
        }
    }
    std::vector<std::string> seen;
    for (const pugi::xml_attribute attribute : message.Root().attributes()) {
        const std::string name = attribute.name();
        if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
            throw Breach(message.Name() + " with two attributes " + Quoted(name));
        }
        seen.push_back(name);
        if (name != "req" && name != "protocolVersion" && !Contains(rule.required, name) &&
            !Contains(rule.optional, name)) {
            throw Breach(message.Name() + " with an unknown attribute " + Quoted(name));
        }
    }
}

}  // namespace

const MessageRules& Rules_1_0() {
    static const MessageRules rules{nullptr,
                                    {{"GET_XML", {}, {}, false},
                                     {"GET_FILE", {"path", "file"}, {}, false},
                                     {"EVENT_XFER_COMPLETE", {}, {}, true},
                                     {"DONE", {}, {}, false},
                                     {"UPDATE_CONFIGURATION", {"txt"}, {}, false}}};
    return rules;
}

const MessageRules& Rules_2_0() {
    static const MessageRules rules{"2.0",
                                    {{"UPDATE_SOFTWARE", {"path", "file"}, {}, false},
                                     {"UPDATE_CONFIGURATION", {"message"}, {}, false},
                                     {"GET_EVENT_LIST", {}, {}, false},
                                     {"NEXT_EVENT", {"reid"}, {}, false},
                                     {"GET_FILE", {"reid", "path", "file"}, {"rehash"}, false},
                                     {"EVENT_XFER_COMPLETE", {"reid"}, {}, false},
                                     {"DONE", {}, {"duration"}, false}}};
    return rules;
}

void CheckMessage(const Message& message, const MessageRules& rules) {
    const auto rule =
        std::find_if(rules.messages.begin(), rules.messages.end(),
                     [&](const MessageRule& candidate) { return message.Name() == candidate.name; });
    if (rule == rules.messages.end()) {
        throw Breach("an unknown message, " + Quoted(message.Name()));
    }
    CheckVersion(message, rules);
    CheckAttributes(message, *rule);
    if (!rule->hasChildren && message.Root().first_child()) {
        throw Breach(message.Name() + " with something inside its 'msg'");
    }
}

}  // namespace rig::dvr
