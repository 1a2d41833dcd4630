#include "tests/harness/model/Messages.h"

#include <map>

namespace {

using model::Element;

const std::vector<std::string> kEvents = {"E1", "ABC123", "EV 0002", "XY", "A&B", "it's", "say \"E\"", "<E>"};
const std::vector<std::string> kFiles = {"a.mp4", "E1.xml", "b", "c_1.ts", "R&D", "'q'"};
const std::vector<std::string> kHashes = {"H1", "H2", "0"};

std::map<std::string, Element>& Descriptions() {
    static std::map<std::string, Element> descriptions;
    return descriptions;
}

Element Msg(const std::string& req) {
    return {"msg", {{"req", req}}, std::nullopt, {}};
}

/// Adds an attribute; now and then does not.
void Give(Dice& dice, Element& element, const std::string& name, const std::string& value) {
    if (!dice.Hit(12)) {
        element.attributes.emplace_back(name, value);
    }
}

/// @return the right one; now and then any
std::string Mostly(Dice& dice, const std::string& right, const std::vector<std::string>& any) {
    return dice.Hit(8) ? dice.Pick(any) : right;
}

Element File(Dice& dice) {
    return {dice.Hit(4) ? "camera" : "file", {{"name", dice.Pick(kFiles)}}, std::nullopt, {}};
}

Element Video(Dice& dice) {
    Element video{"video", {}, std::nullopt, {}};
    if (!dice.Hit(5)) {
        video.children.push_back({"metadata", {{"name", dice.Pick(kFiles)}}, std::nullopt, {}});
    }
    if (dice.Hit(8)) {
        return video;
    }
    Element streams{"streams", {}, std::nullopt, {}};
    for (std::size_t count = dice.Roll(3); count > 0; --count) {
        Element stream{dice.Hit(6) ? "other" : "stream", {}, std::nullopt, {}};
        for (std::size_t file = dice.Roll(4); file > 0; --file) {
            stream.children.push_back(File(dice));
        }
        streams.children.push_back(stream);
    }
    video.children.push_back(streams);
    return video;
}

/// @param needsReid  whether one without identifier would hang the harness, as in 1.0
std::string DescriptionText(Dice& dice, const std::string& reid, bool needsReid) {
    Element event{dice.Hit(15) ? "other-event" : "recording-event", {}, std::nullopt, {}};
    if (needsReid || !dice.Hit(10)) {
        event.attributes.emplace_back("reid", Mostly(dice, reid, kEvents));
    }
    if (!dice.Hit(10)) {
        event.children.push_back(Video(dice));
    }
    return model::Registered(event);
}

Element EventList(Dice& dice) {
    Element list{"events", {}, std::nullopt, {}};
    for (std::size_t count = dice.Roll(4); count > 0; --count) {
        Element item{dice.Hit(8) ? "note" : "event", {}, dice.Pick(kEvents), {}};
        if (dice.Hit(8)) {
            item.text.reset();
        }
        list.children.push_back(item);
    }
    Element message = Msg("EVENT_LIST");
    Give(dice, message, "source", "DVR 7");
    if (!dice.Hit(12)) {
        message.children.push_back(list);
    }
    return message;
}

Element Event(Dice& dice, const std::string& reid) {
    Element message = Msg("EVENT");
    Give(dice, message, "reid", Mostly(dice, reid, kEvents));
    Element xmlFile{"xmlFile", {}, DescriptionText(dice, reid, false), {}};
    if (dice.Hit(12)) {
        xmlFile.text.reset();
    }
    if (!dice.Hit(12)) {
        message.children.push_back(xmlFile);
    }
    return message;
}

Element Xml(Dice& dice) {
    Element xmlFile{"xmlFile", {}, std::nullopt, {}};
    for (std::size_t count = dice.Roll(4); count > 0; --count) {
        Element item{
            dice.Hit(8) ? "note" : "string", {}, DescriptionText(dice, dice.Pick(kEvents), true), {}};
        if (dice.Hit(8)) {
            item.text.reset();
        }
        xmlFile.children.push_back(item);
    }
    Element message = Msg("XML");
    if (!dice.Hit(12)) {
        message.children.push_back(xmlFile);
    }
    return message;
}

Element FileComplete(Dice& dice, const model::Model& model) {
    const auto expected =
        model.Files().empty() ? std::make_pair(std::string("E1"), std::string("b")) : model.Files().front();
    Element message = Msg("FILE_COMPLETE");
    Give(dice, message, "reid", Mostly(dice, expected.first, kEvents));
    Give(dice, message, "file", Mostly(dice, expected.second, kFiles));
    Give(dice, message, "hashCode", dice.Pick(kHashes));
    Give(dice, message, "length", "1234");
    return message;
}

Element About(Dice& dice, const std::string& req, const std::string& reid) {
    Element message = Msg(req);
    Give(dice, message, "reid", Mostly(dice, reid, kEvents));
    return message;
}

/// What a DVR may answer to the last request, including a refusal.
Element Answer(Dice& dice, const model::Model& model) {
    const std::string& asked = model.LastSent();
    const std::string event = model.Events().empty() ? "E1" : model.Events().front();
    const std::string fileEvent = model.Files().empty() ? event : model.Files().front().first;
    if (asked == "GET_XML") {
        return Xml(dice);
    }
    if (asked == "GET_EVENT_LIST") {
        return EventList(dice);
    }
    if (asked == "NEXT_EVENT") {
        return dice.Hit(4) ? About(dice, "INVALID_EVENT", event) : Event(dice, event);
    }
    if (asked == "GET_FILE") {
        static const std::vector<std::string> kReports = {"INVALID_EVENT", "TRANSPORT_EXCEPTION",
                                                          "XFER_IN_PROGRESS"};
        return dice.Hit(3) ? About(dice, dice.Pick(kReports), fileEvent) : FileComplete(dice, model);
    }
    if (asked == "EVENT_XFER_COMPLETE") {
        return About(dice, "EVENT_XFER_ACK", event);
    }
    return Msg(asked == "UPDATE_CONFIGURATION" ? "CONFIGURATION_UPDATE_ERROR" : "OK");
}

Element Anything(Dice& dice, const model::Model& model, int protocol) {
    static const std::vector<std::string> kNames = {"OK",
                                                    "CONFIGURATION_UPDATE_ERROR",
                                                    "SOFTWARE_UPDATE_CONFIRM",
                                                    "EVENT_XFER_ACK",
                                                    "INVALID_EVENT",
                                                    "TRANSPORT_EXCEPTION",
                                                    "XFER_IN_PROGRESS",
                                                    "ok",
                                                    "GET_FILE",
                                                    ""};
    switch (dice.Roll(6)) {
        case 0:
            return EventList(dice);
        case 1:
            return Event(dice, dice.Pick(kEvents));
        case 2:
            return FileComplete(dice, model);
        case 3:
            return protocol == 1 ? Xml(dice) : Msg("XML");
        case 4:
            return {"msg", {{"source", "no req"}}, std::nullopt, {}};
        default:
            return About(dice, dice.Pick(kNames), dice.Pick(kEvents));
    }
}

}  // namespace

namespace model {

const Element* Description(const std::string& text) {
    return &Descriptions().at(text);
}

std::string Registered(const Element& description) {
    std::string text = Compact(description);
    Descriptions().emplace(text, description);
    return text;
}

}  // namespace model

Element RandomMessage(Dice& dice, const model::Model& model, int protocol) {
    Element message = dice.Hit(5) ? Anything(dice, model, protocol) : Answer(dice, model);
    if (protocol == 2) {
        message.attributes.emplace_back("protocolVersion", "2.0");
    }
    return message;
}
