#include "rig/log/WorkLists.h"

#include <pugixml.hpp>
#include <set>

namespace rig::log {

Listed WorkLists::TakeEventList(const pugi::xml_node& message) {
    Listed listed;
    std::set<std::string> seen;
    for (const pugi::xml_node event : message.child("events").children()) {
        const std::string reid = event.text().get();
        if (reid.empty()) {
            continue;  // the harness says so
        }
        if (!seen.insert(reid).second) {
            listed.doubled.push_back(reid);
        }
        events.push_back(reid);
    }
    return listed;
}

Listed WorkLists::TakeEvent(const pugi::xml_node& message) {
    Listed listed;
    TakeDescription(message.child("xmlFile").text().get(), message.attribute("reid").value(), listed);
    listed.hasLargeEvent = listed.files >= 2;
    return listed;
}

Listed WorkLists::TakeXml(const pugi::xml_node& message) {
    Listed listed;
    std::set<std::string> seen;
    const pugi::xml_node container = message.child("xmlFile");
    for (const pugi::xml_node description : container.children("string")) {
        const char* const text = description.text().get();
        listed.noEvent += *text == '\0' ? 1U : 0U;
        const std::string reid = TakeDescription(text, "", listed);
        if (!reid.empty() && !seen.insert(reid).second) {
            listed.doubled.push_back(reid);
        }
    }
    listed.noDescriptions = !container;
    listed.noFiles += container && !container.child("string") ? 1U : 0U;
    return listed;
}

/// @param reid  of the event, or empty if the description must give it
/// @return the event's identifier, or empty if there is no event
std::string WorkLists::TakeDescription(const char* text, const std::string& reid, Listed& listed) {
    pugi::xml_document description;
    if (!description.load_string(text)) {
        listed.notWellFormed += *text == '\0' ? 0U : 1U;
        return "";
    }
    const pugi::xml_node event = description.child("recording-event");
    if (!event) {
        ++listed.noEvent;
        return "";
    }
    std::string name = reid.empty() ? event.attribute("reid").value() : reid;
    if (name.empty()) {
        return "";
    }
    const std::size_t before = files.size();
    const pugi::xml_node video = event.child("video");
    if (const pugi::xml_node metadata = video.child("metadata")) {
        TakeFile(metadata, name, listed);
    }
    for (const pugi::xml_node stream : video.child("streams").children()) {
        for (const pugi::xml_node file : stream.children()) {
            TakeFile(file, name, listed);
        }
    }
    listed.noFiles += files.size() == before ? 1U : 0U;
    return name;
}

void WorkLists::TakeFile(const pugi::xml_node& file, const std::string& reid, Listed& listed) {
    const pugi::xml_attribute name = file.attribute("name");
    listed.namelessFiles += name ? 0U : 1U;
    ++listed.files;
    files.emplace_back(reid, name.value());
}

}  // namespace rig::log
