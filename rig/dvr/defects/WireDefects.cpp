#include <functional>

#include "rig/dvr/defects/DefectChanges.h"

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

std::size_t Number(const std::string& digits) {
    return std::stoul(digits);
}

bool EndConnection(Outgoing& outgoing, const std::string& place, Outgoing::End end) {
    outgoing.end = end;
    outgoing.cutAtRandom = place == "random";
    if (place != "all" && place != "random") {
        outgoing.cut = Number(place);
    }
    return true;
}

}  // namespace

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

bool BadPrefix(Outgoing& outgoing, const DefectContext&) {
    outgoing.prefix = std::string(5, '\x80');
    return true;
}

bool NegativePrefix(Outgoing& outgoing, const DefectContext&) {
    outgoing.prefix = "\xfe\xff\xff\xff\x0f";  // 2^32 - 2, which is -2 where sizes are signed
    return true;
}

bool EmptyFrame(Outgoing& outgoing, const DefectContext&) {
    outgoing.text = "";
    return true;
}

bool LongPrefix(Outgoing& outgoing, const DefectContext& context) {
    outgoing.announcedTooMuch = static_cast<std::int64_t>(Number(context.value));
    return true;
}

bool ShortPrefix(Outgoing& outgoing, const DefectContext& context) {
    outgoing.announcedTooMuch = -static_cast<std::int64_t>(Number(context.value));
    return true;
}

bool Garble(Outgoing& outgoing, const DefectContext& context) {
    std::string text = outgoing.text.value_or(outgoing.message.Text());
    if (text.empty()) {
        return false;
    }
    std::uniform_int_distribution<std::size_t> place(0, text.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    for (std::size_t count = Number(context.value); count > 0; --count) {
        text[place(context.random)] = static_cast<char>(byte(context.random));
    }
    outgoing.text = text;
    return true;
}

bool Close(Outgoing& outgoing, const DefectContext& context) {
    return EndConnection(outgoing, context.value, Outgoing::End::Close);
}

bool Reset(Outgoing& outgoing, const DefectContext& context) {
    return EndConnection(outgoing, context.value, Outgoing::End::Reset);
}

bool SecondConnection(Outgoing& outgoing, const DefectContext&) {
    outgoing.knocks = true;
    return true;
}

bool Reconnect(Outgoing& outgoing, const DefectContext&) {
    outgoing.reconnects = true;
    return true;
}

}  // namespace rig::dvr
