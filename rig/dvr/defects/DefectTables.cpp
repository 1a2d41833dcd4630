#include "rig/dvr/defects/DefectTables.h"

#include <algorithm>
#include <cctype>

#include "rig/protocol/Catalogue.h"

namespace rig::dvr {

std::vector<const char*> MessagesWith(const char* field) {
    std::vector<const char*> names;
    for (const protocol::MessageKind& kind : protocol::Catalogue()) {
        const bool hasField = HasAttribute(kind, field) || HasChild(kind, field);
        const bool isListed =
            std::find(names.begin(), names.end(), std::string_view(kind.name)) != names.end();
        if (kind.sender == protocol::Sender::Dvr && hasField && !isListed) {
            names.push_back(kind.name);
        }
    }
    return names;
}

bool Replace(Outgoing& outgoing, const char* attribute, const std::string& value) {
    pugi::xml_attribute found = outgoing.message.Root().attribute(attribute);
    return found && found.value() != value && found.set_value(value.c_str());
}

bool Remove(Outgoing& outgoing, const char* attribute) {
    return outgoing.message.Root().remove_attribute(attribute);
}

bool ExchangeCase(Outgoing& outgoing, const char* attribute) {
    std::string value = outgoing.message.Get(attribute);
    for (char& letter : value) {
        const int code = static_cast<unsigned char>(letter);
        letter = static_cast<char>(std::isupper(code) != 0 ? std::tolower(code) : std::toupper(code));
    }
    return Replace(outgoing, attribute, value);
}

Message Sibling(const Message& message, const char* name) {
    Message sibling(name);
    for (const char* attribute : {"protocolVersion", "reid"}) {
        const auto value = message.Find(attribute);
        if (value) {
            sibling.Set(attribute, *value);
        }
    }
    return sibling;
}

std::vector<std::string> FilesOf(const Recordings& recordings, const std::string& event) {
    return recordings.Has(event) ? recordings.Find(event).Files() : std::vector<std::string>();
}

}  // namespace rig::dvr
