#include "rig/log/WorkLists.h"

#include <pugixml.hpp>
#include <set>

#include "rig/base/Printable.h"

namespace rig::judge {

void WorkLists::TakeEventList(const pugi::xml_node& message, const Place& place, Run& facts) {
    std::set<std::string> listed;
    for (const pugi::xml_node event : message.child("events").children()) {
        const std::string reid = event.text().get();
        if (reid.empty()) {
            continue;  // the harness says so
        }
        if (!listed.insert(reid).second) {
            facts.doubledEvents.Add(place, Printable(reid));
        }
        events.push_back(reid);
    }
}

void WorkLists::TakeEvent(const pugi::xml_node& message, const Place& place, Run& facts) {
    const std::size_t before = files.size();
    TakeDescription(message.child("xmlFile").text().get(), message.attribute("reid").value(), place, facts);
    facts.files += files.size() - before;
    facts.hasLargeEvent = facts.hasLargeEvent || files.size() >= before + 2;
}

void WorkLists::TakeXml(const pugi::xml_node& message, const Place& place, Run& facts) {
    const std::size_t before = files.size();
    std::set<std::string> listed;
    const pugi::xml_node container = message.child("xmlFile");
    for (const pugi::xml_node description : container.children("string")) {
        const std::string text = description.text().get();
        if (text.empty()) {
            facts.noEvent.Add(place);
        }
        const std::string reid = TakeDescription(text, "", place, facts);
        if (!reid.empty() && !listed.insert(reid).second) {
            facts.doubledEvents.Add(place, Printable(reid));
        }
    }
    if (!container) {
        facts.noDescriptions.Add(place);
    } else if (!container.child("string")) {
        facts.noFiles.Add(place);
    }
    facts.files += files.size() - before;
}

/// @param reid  of the event, or empty if the description must give it
/// @return the event's identifier, or empty if there is no event
std::string WorkLists::TakeDescription(const std::string& text, const std::string& reid, const Place& place,
                                       Run& facts) {
    pugi::xml_document description;
    if (!description.load_string(text.c_str())) {
        if (!text.empty()) {
            facts.notWellFormed.Add(place);
        }
        return "";
    }
    const pugi::xml_node event = description.child("recording-event");
    if (!event) {
        facts.noEvent.Add(place);
        return "";
    }
    std::string name = reid.empty() ? event.attribute("reid").value() : reid;
    if (name.empty()) {
        return "";
    }
    const std::size_t before = files.size();
    const pugi::xml_node video = event.child("video");
    if (const pugi::xml_node metadata = video.child("metadata")) {
        TakeFile(metadata, name, place, facts);
    }
    for (const pugi::xml_node stream : video.child("streams").children()) {
        for (const pugi::xml_node file : stream.children()) {
            TakeFile(file, name, place, facts);
        }
    }
    if (files.size() == before) {
        facts.noFiles.Add(place);
    }
    return name;
}

void WorkLists::TakeFile(const pugi::xml_node& file, const std::string& reid, const Place& place,
                         Run& facts) {
    if (!file.attribute("name")) {
        facts.namelessFiles.Add(place);
    }
    files.emplace_back(reid, file.attribute("name").value());
}

}  // namespace rig::judge
