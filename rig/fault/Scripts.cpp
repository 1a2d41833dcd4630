#include <utility>

#include "rig/base/ParseNumber.h"
#include "rig/dvr/wire/Frame.h"
#include "rig/dvr/wire/Message.h"
#include "rig/fault/FaultTables.h"
#include "rig/protocol/Catalogue.h"

namespace rig::fault {

using dvr::Message;

Act Send(std::string bytes) {
    return {Act::Kind::Send, std::move(bytes)};
}

Act Wait(Milliseconds time) {
    return Just(Act::Kind::Wait, time);
}

Act Take(Milliseconds time, std::size_t answers, std::vector<std::string> only) {
    return {Act::Kind::TakeAnswers, "", time, answers, std::move(only)};
}

Act Just(Act::Kind kind, Milliseconds time) {
    return {kind, "", time};
}

std::string PrefixOf(std::size_t length) {
    return dvr::EncodePrefix(static_cast<std::uint32_t>(length));
}

std::string FrameOf(const std::string& text) {
    return dvr::EncodeFrame(text);
}

Milliseconds TimeOf(const std::string& value) {
    return Milliseconds(ParseNumber<int>(value).value_or(0));
}

Script Ask(const Scene& scene, const std::string& text, Milliseconds time) {
    return {Send(FrameOf(text)), Take(time), Send(FrameOf(scene.text))};
}

Script BreakOff(const std::string& bytes) {
    return {Send(bytes), Take(kSilenceTime), Just(Act::Kind::Close)};
}

std::string With(const std::string& text, const char* attribute, const std::string& value) {
    Message message = Message::Parse(text);
    if (pugi::xml_attribute found = message.Root().attribute(attribute)) {
        found.set_value(value.c_str());
        return message.Text();
    }
    return message.Set(attribute, value).Text();
}

std::string Without(const std::string& text, const char* attribute) {
    const Message message = Message::Parse(text);
    message.Root().remove_attribute(attribute);
    return message.Text();
}

bool Has(const std::string& text, const char* attribute) {
    return Message::Parse(text).Find(attribute).has_value();
}

std::string Get(const std::string& text, const char* attribute) {
    return Message::Parse(text).Get(attribute);
}

std::string Update() {
    return Request(2, "UPDATE_SOFTWARE", {{"path", "/mnt/hd/connectionmgr"}, {"file", "upgrade.zip"}});
}

std::string Request(int dialect, const std::string& name,
                    const std::vector<std::pair<const char*, std::string>>& attributes) {
    Message message(name);
    for (const auto& [attribute, value] : attributes) {
        message.Set(attribute, value);
    }
    if (const char* const version = protocol::VersionOf(dialect)) {
        message.Set("protocolVersion", version);
    }
    return message.Text();
}

}  // namespace rig::fault
