#include <functional>

#include "rig/dvr/defects/DefectTables.h"

namespace rig::dvr {
namespace {

/// @return the element whose text is the (in 1.0 the first) description of an event; null if there is none
pugi::xml_node Description(const Outgoing& outgoing) {
    const pugi::xml_node container = outgoing.message.Root().child("xmlFile");
    return outgoing.message.Name() == "XML" ? container.child("string") : container;
}

/// Changes the description as a document.
bool ChangeDescription(Outgoing& outgoing, const std::function<bool(pugi::xml_node event)>& change) {
    pugi::xml_node element = Description(outgoing);
    pugi::xml_document description;
    if (!element || !description.load_string(element.text().get()) || !change(description.first_child())) {
        return false;
    }
    return element.text().set(Print(description).c_str());
}

std::string WithoutEnd(const std::string& text) {
    return text.substr(0, text.rfind('<'));
}

bool MalformedXml(Outgoing& outgoing, const DefectContext&) {
    const std::string text = outgoing.message.Text();
    // A self-closing element loses its end, any other its end tag.
    outgoing.text = text.find("</") == std::string::npos ? text.substr(0, text.rfind('/')) : WithoutEnd(text);
    return true;
}

bool MalformedDescription(Outgoing& outgoing, const DefectContext&) {
    pugi::xml_node element = Description(outgoing);
    return element && element.text().set(WithoutEnd(element.text().get()).c_str());
}

bool DescriptionWithoutReid(Outgoing& outgoing, const DefectContext&) {
    return ChangeDescription(outgoing, [](pugi::xml_node event) { return event.remove_attribute("reid"); });
}

bool DescriptionOtherReid(Outgoing& outgoing, const DefectContext& context) {
    return ChangeDescription(outgoing, [&](pugi::xml_node event) {
        return event.attribute("reid").set_value(context.value.c_str());
    });
}

bool DescriptionWithoutVideo(Outgoing& outgoing, const DefectContext&) {
    return ChangeDescription(outgoing, [](pugi::xml_node event) { return event.remove_child("video"); });
}

bool DescriptionWithoutName(Outgoing& outgoing, const DefectContext&) {
    return ChangeDescription(outgoing, [](pugi::xml_node event) {
        return event.child("video").child("metadata").remove_attribute("name");
    });
}

bool DescriptionWithoutEvent(Outgoing& outgoing, const DefectContext&) {
    return ChangeDescription(outgoing, [](pugi::xml_node event) { return event.set_name("something-else"); });
}

bool EmptyDescription(Outgoing& outgoing, const DefectContext&) {
    pugi::xml_node element = Description(outgoing);
    return element && element.remove_children();
}

bool NoDescription(Outgoing& outgoing, const DefectContext&) {
    return outgoing.message.Root().remove_child("xmlFile");
}

bool EmptyList(Outgoing& outgoing, const DefectContext&) {
    return outgoing.message.Root().child("events").remove_children();
}

bool DoubleList(Outgoing& outgoing, const DefectContext&) {
    pugi::xml_node list = outgoing.message.Root().first_child();
    const pugi::xml_node last = list.last_child();
    for (pugi::xml_node entry = list.first_child(); entry; entry = entry.next_sibling()) {
        list.append_copy(entry);
        if (entry == last) {
            return true;
        }
    }
    return false;
}

bool EventWithoutText(Outgoing& outgoing, const DefectContext&) {
    return !outgoing.message.Root().child("events").append_child("event").empty();
}

}  // namespace

// clang-format off
const std::vector<DefectKind>& DocumentDefects() {
    static const std::vector<DefectKind> kinds = {
        {"malformed-xml", None, "", "12", {}, false,
         "leaves the end of the document out", "\"error: 1:\", \"row: \", assertion \"not incomingMessage.Error()\"",
         MalformedXml},
        {"malformed-description", None, "", "12", MessagesWith("xmlFile"), false,
         "leaves the end of the event's description out", "\"error: 1:\", \"row: \", assertion \"not embmsg.Error()\"",
         MalformedDescription},
        {"description-without-reid", None, "", "12", MessagesWith("xmlFile"), false,
         "describes an event without identifier",
         "1.0: \"Found event with no REID\" for ever; 2.0: \"Escaped XML for event contains no REID\"",
         DescriptionWithoutReid},
        {"description-other-reid", Text, "no-such-event", "12", MessagesWith("xmlFile"), false,
         "describes another event",
         "1.0: \"Found event \" the other one, whose files are asked for; 2.0: \"Handle_EVENT_msg: 'reid' in escaped XML "
         "incorrect: \"",
         DescriptionOtherReid},
        {"description-without-video", None, "", "12", MessagesWith("xmlFile"), false,
         "describes an event without files",
         "1.0: \"Found event \" and nothing more; 2.0: \"Got EVENT message with no files to receive\"",
         DescriptionWithoutVideo},
        {"description-without-name", None, "", "12", MessagesWith("xmlFile"), false,
         "describes a file without name", "aborted: \"basic_string::_M_construct null not valid\"",
         DescriptionWithoutName},
        {"description-without-event", None, "", "12", MessagesWith("xmlFile"), false,
         "describes something other than an event",
         "1.0: nothing more; 2.0: \"Got EVENT message with no files to receive\"", DescriptionWithoutEvent},
        {"empty-description", None, "", "12", MessagesWith("xmlFile"), false,
         "describes the event by an empty text",
         "1.0: nothing more; 2.0: \"EVENT message 'xmlFile' tag does not contain data\", \"Got EVENT message with no files "
         "to receive\"",
         EmptyDescription},
        {"no-description", None, "", "12", MessagesWith("xmlFile"), false,
         "leaves `xmlFile` out",
         "1.0: nothing more; 2.0: \"EVENT message does not contain 'xmlFile' tag\", \"Got EVENT message with no files to "
         "receive\"",
         NoDescription},
        {"empty-list", None, "", "2", {"EVENT_LIST"}, false,
         "lists no event",
         "\"could not find 'event' tag in EVENT_LIST message\", \"Got EVENT_LIST message with no events\"", EmptyList},
        {"double-list", None, "", "12", {"EVENT_LIST", "XML"}, false,
         "lists each event twice", "each event is exported twice", DoubleList},
        {"event-without-text", None, "", "2", {"EVENT_LIST"}, false,
         "lists an event without identifier as well", "\"'event' found with no text\"", EventWithoutText},
    };
    return kinds;
}
// clang-format on

}  // namespace rig::dvr
