#include "rig/campaign/evidence/Coverage.h"
#include "rig/protocol/Catalogue.h"

namespace rig::campaign {
namespace {

/// @return what the harness reads in a DVR's message, or what only some of the harness's have
std::vector<std::string_view> FieldsOf(const protocol::MessageKind& kind) {
    if (kind.sender == protocol::Sender::Harness) {
        return kind.optional;
    }
    std::vector<std::string_view> fields(kind.required.begin() + 1, kind.required.end());  // without `req`
    if (*kind.children != '\0') {
        fields.emplace_back(kind.children);
    }
    return fields;
}

std::vector<ProtocolItem> ItemsOf(const std::vector<protocol::MessageKind>& kinds) {
    std::vector<ProtocolItem> items;
    for (const protocol::MessageKind& kind : kinds) {
        items.push_back({kind.dialect, NameOf(kind.sender), kind.name, ""});
        for (const std::string_view field : FieldsOf(kind)) {
            items.push_back({kind.dialect, NameOf(kind.sender), kind.name, field});
        }
    }
    return items;
}

}  // namespace

const std::vector<ProtocolItem>& ProtocolItems() {
    static const std::vector<ProtocolItem> items = ItemsOf(protocol::Catalogue());
    return items;
}

const std::vector<SwitchItem>& SwitchItems() {
    static const std::vector<SwitchItem> kSwitches = {
        {'e', false, {"invalid-event.fired"}},
        {'f', false, {"invalid-file.fired-event", "invalid-file.fired-name"}},
        {'t', false, {"transport.fired"}},
        {'r', false, {"rehash.fired"}},
        {'x', false, {"xfer.fired"}},
        {'z', true, {"size.fired"}},
        {'g', true, {"config.fired"}},
        {'u', false, {"upgrade.fired"}},
        {'c', false, {"close.fired"}},
        {'d', false, {"duration.fired"}},
        {'s', false, {"sleep.fired"}},
    };
    return kSwitches;
}

}  // namespace rig::campaign
