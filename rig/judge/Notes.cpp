#include "rig/judge/Notes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <vector>

#include "rig/base/Printable.h"
#include "rig/judge/Difference.h"
#include "rig/judge/Framing.h"
#include "rig/log/HarnessText.h"
#include "rig/log/Xml.h"
#include "rig/protocol/Catalogue.h"

namespace rig::judge {
namespace {

using log::Sign;

constexpr std::size_t kShownBytes = 200;

std::vector<std::string> DescriptionsIn(const pugi::xml_node& msg) {
    std::vector<std::string> descriptions;
    const pugi::xml_node container = msg.child("xmlFile");
    for (const pugi::xml_node& one : container.children("string")) {
        descriptions.emplace_back(log::TextOf(one));
    }
    if (descriptions.empty()) {
        descriptions.emplace_back(log::TextOf(container));
    }
    return descriptions;
}

bool IsNameless(const pugi::xml_node& file) {
    return !file.attribute("name");
}

bool HasEmptyName(const pugi::xml_node& file) {
    return file.attribute("name") && *file.attribute("name").value() == '\0';
}

bool AnyFile(const pugi::xml_node& video, bool (*isSo)(const pugi::xml_node&)) {
    if (video.child("metadata") && isSo(video.child("metadata"))) {
        return true;
    }
    for (const pugi::xml_node& stream : video.child("streams").children()) {
        const auto files = stream.children();
        if (std::any_of(files.begin(), files.end(), isSo)) {
            return true;
        }
    }
    return false;
}

bool Has(const std::string& description, DescriptionFault fault) {
    if (fault == DescriptionFault::NotXml) {
        return !description.empty() && log::IsMalformed(description);
    }
    pugi::xml_document document;
    if (!log::LoadAsTheHarness(description, document)) {
        return fault == DescriptionFault::NoEvent;
    }
    const pugi::xml_node event = document.child("recording-event");
    const pugi::xml_node video = event.child("video");
    switch (fault) {
        case DescriptionFault::NoEvent:
            return !event;
        case DescriptionFault::NoReid:
            return event && !event.attribute("reid");
        case DescriptionFault::NamelessFile:
            return AnyFile(video, IsNameless);
        case DescriptionFault::EmptyName:
            return AnyFile(video, HasEmptyName);
        case DescriptionFault::EmptyReid:
            return event.attribute("reid") && *event.attribute("reid").value() == '\0';
        default:
            return event && !video.child("metadata") && !video.child("streams").first_child().first_child();
    }
}

std::string OtherEvent(const log::Message& message) {
    pugi::xml_document description;
    log::LoadAsTheHarness(log::TextOf(message.root.child("xmlFile")), description);
    return Instead(description.child("recording-event").attribute("reid").value(),
                   message.root.attribute("reid").value());
}

/// @return which of the listed events has no text: "event 2 of 3"
std::string EmptyEventIn(const log::Message& message) {
    std::size_t count = 0;
    std::size_t empty = 0;
    for (const pugi::xml_node& event : message.root.child("events").children()) {
        count += event.type() == pugi::node_element ? 1U : 0U;
        if (event.type() == pugi::node_element && empty == 0 && *log::TextOf(event) == '\0') {
            empty = count;
        }
    }
    return empty == 0 ? Shown(message) : fmt::format("event {} of {}: {}", empty, count, Shown(message));
}

/// @return the name, and the one that was meant if only upper and lower case differ
std::string UnknownName(const std::string& name) {
    std::string upper = name;
    std::transform(name.begin(), name.end(), upper.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    const bool isMisspelt = upper != name && (protocol::Find(1, protocol::Sender::Dvr, upper) != nullptr ||
                                              protocol::Find(2, protocol::Sender::Dvr, upper) != nullptr);
    return Printable(name) + (isMisspelt ? " instead of " + upper : "");
}

}  // namespace

std::string Shown(const log::Message& message) {
    return Excerpt(std::string(message.text.substr(0, kShownBytes + 1)), kShownBytes);
}

std::string ShownDescription(const log::Message& message, DescriptionFault fault) {
    for (const std::string& description : DescriptionsIn(message.root)) {
        if (Has(description, fault)) {
            return fault == DescriptionFault::NotXml ? Where(description) : Excerpt(description, kShownBytes);
        }
    }
    return {};
}

std::string ListedElsewhere(const log::Message& message) {
    for (const pugi::xml_node& list : message.root.children()) {
        if (list.type() != pugi::node_element) {
            continue;
        }
        const pugi::xml_node item =
            list.find_child([](const pugi::xml_node& child) { return child.type() == pugi::node_element; });
        const bool isItem = !item && *list.child_value() != '\0';
        if (item || isItem) {
            return fmt::format("{}{} instead of events/event: {}", Printable(list.name()),
                               item ? "/" + Printable(item.name()) : "", Shown(message));
        }
    }
    return {};
}

std::string NoteOn(const log::Statement& statement, const log::Message& message) {
    switch (statement.sign) {
        case Sign::UnknownMessage:
            return UnknownName(message.name);
        case Sign::NotXml: {
            const std::string description = ShownDescription(message, DescriptionFault::NotXml);
            return description.empty() ? Shown(message) : description;
        }
        case Sign::EventWithoutText:
            return EmptyEventIn(message);
        case Sign::DescriptionWithoutReid:
            return ShownDescription(message, DescriptionFault::NoReid);
        case Sign::DescriptionReidWrong:
            return OtherEvent(message);
        case Sign::EventWithoutFiles: {
            const std::string description = ShownDescription(message, DescriptionFault::NoFiles);
            return description.empty() ? Shown(message) : description;
        }
        case Sign::NoRequest:
        case Sign::NoSource:
        case Sign::NoEventTag:
        case Sign::NoDescription:
        case Sign::EmptyDescription:
        case Sign::FileWithoutNames:
        case Sign::AckWithoutReid:
        case Sign::NoHash:
        case Sign::NoLength:
            return Shown(message);
        default:
            return {};
    }
}

}  // namespace rig::judge
