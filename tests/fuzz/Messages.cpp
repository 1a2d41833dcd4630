#include "tests/fuzz/Messages.h"

#include <algorithm>

#include "tests/support/Escaped.h"

namespace fuzz {

const Forms& FormsOf(Sender sender) {
    static const Forms dvr10 = {
        {"OK", {}, Body::None},
        {"XML", {}, Body::Descriptions},
        {"FILE_COMPLETE", {{"reid", Value::FileEvent}, {"file", Value::File}}, Body::None},
        {"CONFIGURATION_UPDATE_ERROR", {}, Body::None},
    };
    static const Forms dvr20 = {
        {"OK", {}, Body::None},
        {"EVENT_LIST", {{"source", Value::Source}}, Body::EventList},
        {"EVENT", {{"reid", Value::Event}}, Body::Description},
        {"FILE_COMPLETE",
         {{"reid", Value::FileEvent},
          {"file", Value::File},
          {"hashCode", Value::Hash},
          {"length", Value::Length}},
         Body::None},
        {"EVENT_XFER_ACK", {{"reid", Value::Event}}, Body::None},
        {"INVALID_EVENT", {{"reid", Value::Event}}, Body::None},
        {"TRANSPORT_EXCEPTION", {{"reid", Value::FileEvent}}, Body::None},
        {"XFER_IN_PROGRESS", {{"reid", Value::FileEvent}}, Body::None},
        {"SOFTWARE_UPDATE_CONFIRM", {}, Body::None},
        {"CONFIGURATION_UPDATE_ERROR", {}, Body::None},
    };
    static const Forms harness10 = {
        {"GET_XML", {}, Body::None, "XML"},
        {"GET_FILE", {{"path", Value::FileEvent}, {"file", Value::File}}, Body::None, "FILE_COMPLETE"},
        {"EVENT_XFER_COMPLETE", {}, Body::Identifiers},
        {"DONE", {}, Body::None},
        {"UPDATE_CONFIGURATION", {{"txt", Value::Config}}, Body::None, "CONFIGURATION_UPDATE_ERROR"},
    };
    static const Forms harness20 = {
        {"GET_EVENT_LIST", {{"protocolVersion", Value::Version}}, Body::None, "EVENT_LIST"},
        {"NEXT_EVENT", {{"reid", Value::Event}, {"protocolVersion", Value::Version}}, Body::None, "EVENT"},
        {"GET_FILE",
         {{"reid", Value::FileEvent},
          {"path", Value::FileEvent},
          {"file", Value::File},
          {"protocolVersion", Value::Version}},
         Body::None,
         "FILE_COMPLETE"},
        {"GET_FILE",
         {{"reid", Value::FileEvent},
          {"path", Value::FileEvent},
          {"file", Value::File},
          {"protocolVersion", Value::Version},
          {"rehash", Value::True}},
         Body::None,
         "FILE_COMPLETE"},
        {"EVENT_XFER_COMPLETE",
         {{"reid", Value::Event}, {"protocolVersion", Value::Version}},
         Body::None,
         "EVENT_XFER_ACK"},
        {"DONE", {{"protocolVersion", Value::Version}}, Body::None},
        {"DONE", {{"protocolVersion", Value::Version}, {"duration", Value::Minutes}}, Body::None},
        {"UPDATE_SOFTWARE",
         {{"path", Value::Path}, {"file", Value::Zip}, {"protocolVersion", Value::Version}},
         Body::None,
         "SOFTWARE_UPDATE_CONFIRM"},
        {"UPDATE_CONFIGURATION",
         {{"protocolVersion", Value::Version}, {"message", Value::Config}},
         Body::None,
         "CONFIGURATION_UPDATE_ERROR"},
    };
    switch (sender) {
        case Sender::Dvr_1_0:
            return dvr10;
        case Sender::Dvr_2_0:
            return dvr20;
        case Sender::Harness_1_0:
            return harness10;
        default:
            return harness20;
    }
}

namespace {

constexpr const char* kEvents[] = {"EVT1", "EVT2", "E",    "",          "a/b",
                                   "../x", "A&B",  "it's", "say \"E\"", "&#x41;"};
constexpr const char* kFiles[] = {"m.xml", "a.ts", "b.ts", "c.ts", "", "R&D", "'q'", "x y"};
constexpr const char* kStrange[] = {"ok",   "GET_FILE", "XML", "EVENT", "",  "msg", "recording-event",
                                    "reid", "file",     "req", "name",  "#", "\n",  "string"};

/// @return some bytes of the input itself
std::string Raw(Choices& choices) {
    return choices.Bytes(choices.Roll(16));
}

/// @return bytes as a document holds them; now and then unescaped, which may not be XML
std::string Encoded(Choices& choices, const std::string& text) {
    return choices.Hit(40) ? text : Escaped(text);
}

template <typename List>
std::string Mostly(Choices& choices, const std::string& right, const List& others) {
    switch (choices.Roll(12)) {
        case 10:
            return choices.Pick(others);
        case 11:
            return Raw(choices);
        default:
            return right;
    }
}

std::string ValueOf(Choices& choices, Value value, const Expected& expected) {
    static const std::vector<std::string> kNumbers = {"1", "0", "-1", "30", "1e9", "99999999999999999999"};
    switch (value) {
        case Value::Event:
            return Mostly(choices, expected.event, kEvents);
        case Value::FileEvent:
            return Mostly(choices, expected.file.first, kEvents);
        case Value::File:
            return Mostly(choices, expected.file.second, kFiles);
        case Value::Version:
            return Mostly(choices, "2.0", kNumbers);
        case Value::True:
            return Mostly(choices, "true", kStrange);
        case Value::Config:
            return Mostly(choices, "<FakeConfig info=\"bogus\" />", kStrange);
        case Value::Path:
            return Mostly(choices, "/mnt/hd/connectionmgr", kStrange);
        case Value::Zip:
            return Mostly(choices, "upgrade.zip", kStrange);
        case Value::Source:
            return Mostly(choices, "DVR", kStrange);
        default:
            return Mostly(choices, choices.Pick(kNumbers), kStrange);
    }
}

std::string AttributeText(Choices& choices, const std::string& name, const std::string& value) {
    std::string text = " " + (choices.Hit(40) ? Raw(choices) : name) + "=\"" + Encoded(choices, value) + "\"";
    switch (choices.Roll(24)) {
        case 22:
            return "";
        case 23:
            return text + text;
        default:
            return text;
    }
}

/// @return an element around the content; now and then an empty one, two of them, or something else instead
std::string ElementText(Choices& choices, const std::string& name, const std::string& attributes,
                        const std::string& content) {
    const std::string start = "<" + name + attributes;
    switch (choices.Roll(40)) {
        case 35:
            return "<!--" + name + "-->";
        case 36:
            return Raw(choices);
        case 37:
            return start + "/>";
        case 38: {
            const std::string strange = choices.Pick(kStrange);
            return "<" + strange + attributes + ">" + content + "</" + strange + ">";
        }
        case 39:
            return start + ">" + content + "</" + name + ">" + start + "/>";
        default:
            return content.empty() ? start + "/>" : start + ">" + content + "</" + name + ">";
    }
}

std::string NamedFile(Choices& choices, const char* element) {
    return ElementText(choices, element, AttributeText(choices, "name", choices.Pick(kFiles)), "");
}

std::string Description(Choices& choices, const Expected& expected) {
    std::string streams;
    for (std::size_t left = choices.Roll(3); left > 0; --left) {
        std::string files;
        for (std::size_t file = choices.Roll(4); file > 0; --file) {
            files += NamedFile(choices, choices.Hit(4) ? "camera" : "file");
        }
        streams += ElementText(choices, "stream", "", files);
    }
    const std::string metadata = choices.Hit(6) ? "" : NamedFile(choices, "metadata");
    const std::string video =
        ElementText(choices, "video", "", metadata + ElementText(choices, "streams", "", streams));
    const std::string reid = AttributeText(choices, "reid", Mostly(choices, expected.event, kEvents));
    const std::string text = ElementText(choices, "recording-event", reid, video);
    return choices.Hit(20) ? Damaged(choices, text) : text;
}

std::string List(Choices& choices, const char* item) {
    std::string items;
    for (std::size_t left = choices.Roll(5); left > 0; --left) {
        items +=
            ElementText(choices, item, "", Encoded(choices, Mostly(choices, choices.Pick(kEvents), kEvents)));
    }
    return items;
}

const Form& ChooseForm(Choices& choices, const Forms& forms, const std::string& req) {
    const auto expected =
        std::find_if(forms.begin(), forms.end(), [&](const Form& form) { return form.req == req; });
    return expected == forms.end() || choices.Hit(3) ? choices.Pick(forms) : *expected;
}

std::string BodyText(Choices& choices, Body body, const Expected& expected) {
    switch (body) {
        case Body::EventList:
            return ElementText(choices, "events", "", List(choices, "event"));
        case Body::Identifiers:
            return ElementText(choices, "events", "", List(choices, "string"));
        case Body::Description:
            return ElementText(choices, "xmlFile", "", Encoded(choices, Description(choices, expected)));
        case Body::Descriptions: {
            std::string items;
            for (std::size_t left = choices.Roll(4); left > 0; --left) {
                const Expected other = {choices.Pick(kEvents), {}, ""};
                items += ElementText(choices, "string", "", Encoded(choices, Description(choices, other)));
            }
            return ElementText(choices, "xmlFile", "", items);
        }
        default:
            return "";
    }
}

}  // namespace

std::string Damaged(Choices& choices, std::string text) {
    for (std::size_t left = choices.Roll(4) + 1; left > 0 && !text.empty(); --left) {
        const std::size_t at = choices.Word() % text.size();
        const std::size_t count = std::min(choices.Roll(9), text.size() - at);
        switch (choices.Roll(5)) {
            case 0:
                text[at] = static_cast<char>(choices.Byte());
                break;
            case 1:
                text.erase(at, count);
                break;
            case 2:
                text.insert(at, Raw(choices));
                break;
            case 3:
                text.insert(at, text.substr(at, count));
                break;
            default:
                text.resize(at);
        }
    }
    return text;
}

std::string MakeMessage(Choices& choices, Sender sender, const Expected& expected) {
    const Form& form = ChooseForm(choices, FormsOf(sender), expected.req);
    const std::string req = choices.Hit(24) ? Mostly(choices, choices.Pick(kStrange), kStrange) : form.req;
    std::string attributes = AttributeText(choices, "req", req);
    for (const Attribute& attribute : form.attributes) {
        attributes += AttributeText(choices, attribute.name, ValueOf(choices, attribute.value, expected));
    }
    const std::string text = ElementText(choices, "msg", attributes, BodyText(choices, form.body, expected));
    return choices.Hit(24) ? Damaged(choices, text) : text;
}

}  // namespace fuzz
