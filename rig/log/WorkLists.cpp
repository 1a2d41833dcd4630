#include "rig/log/WorkLists.h"

#include <pugixml.hpp>
#include <set>
#include <string_view>

#include "rig/log/HarnessText.h"
#include "rig/log/Xml.h"

namespace rig::log {
namespace {

bool IsElement(const pugi::xml_node& node) {
    return node.type() == pugi::node_element;
}

bool HasSecond(const pugi::xml_node& message, const char* name) {
    return message.child(name).next_sibling(name);
}

}  // namespace

void WorkLists::Append(const WorkLists& more) {
    events.insert(events.end(), more.events.begin(), more.events.end());
    files.insert(files.end(), more.files.begin(), more.files.end());
}

Listed WorkLists::TakeEventList(const pugi::xml_node& message) {
    Listed listed;
    listed.hasSecond = HasSecond(message, "events");
    std::set<std::string> seen;
    // Every sibling counts as an event, whatever its name.
    for (pugi::xml_node event = message.child("events").child("event"); event; event = event.next_sibling()) {
        const std::string reid = TextOf(event);
        if (reid.empty()) {
            ++(IsElement(event) ? listed.emptyEvents : listed.notEvents);
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
    listed.hasSecond = HasSecond(message, "xmlFile");
    TakeDescription(TextOf(message.child("xmlFile")), message.attribute("reid").value(), listed);
    listed.hasLargeEvent = listed.files >= 2;
    return listed;
}

Listed WorkLists::TakeXml(const pugi::xml_node& message) {
    Listed listed;
    std::set<std::string> seen;
    const pugi::xml_node container = message.child("xmlFile");
    for (pugi::xml_node node = container.child("string"); node; node = node.next_sibling()) {
        const char* const text = TextOf(node);
        listed.noEvent += *text == '\0' && IsElement(node) ? 1U : 0U;
        const std::string reid = TakeDescription(text, "", listed);
        if (!reid.empty() && !seen.insert(reid).second) {
            listed.doubled.push_back(reid);
        }
    }
    listed.hasSecond = HasSecond(message, "xmlFile");
    listed.noDescriptions = !container;
    listed.isEmpty = container && !container.find_child(IsElement);
    listed.noFiles += container && !container.child("string") && !listed.isEmpty ? 1U : 0U;
    return listed;
}

/// @param reid  of the event, or empty if the description must give it
/// @return the event's identifier, or empty if there is no event
std::string WorkLists::TakeDescription(const char* text, const std::string& reid, Listed& listed) {
    listed.notWellFormed += *text != '\0' && IsMalformed(text) ? 1U : 0U;
    pugi::xml_document description;
    if (!LoadAsTheHarness(text, description)) {
        return "";
    }
    const pugi::xml_node event = description.child("recording-event");
    if (!event) {
        ++listed.noEvent;
        return "";
    }
    const pugi::xml_attribute own = event.attribute("reid");
    if (reid.empty() && !own) {
        return "";
    }
    std::string name = reid.empty() ? own.value() : reid;
    listed.emptyReids += name.empty() ? 1U : 0U;
    const std::size_t before = files.size();
    const pugi::xml_node video = event.child("video");
    if (const pugi::xml_node metadata = video.child("metadata")) {
        TakeFile(metadata, name, listed);
    }
    for (pugi::xml_node stream = video.child("streams").child("stream"); stream;
         stream = stream.next_sibling()) {
        for (const pugi::xml_node file : stream.children()) {
            TakeFile(file, name, listed);
        }
    }
    listed.noFiles += files.size() == before ? 1U : 0U;
    std::set<std::string_view> seen;
    for (std::size_t file = before; file < files.size(); ++file) {
        if (!files[file].second.empty() && !seen.insert(files[file].second).second) {
            listed.doubledFiles.push_back(files[file]);
        }
    }
    return name;
}

void WorkLists::TakeFile(const pugi::xml_node& file, const std::string& reid, Listed& listed) {
    const pugi::xml_attribute name = file.attribute("name");
    if (!name) {
        ++(IsElement(file) ? listed.namelessFiles : listed.notFiles);
    } else if (*name.value() == '\0') {
        ++listed.emptyNames;
    }
    ++listed.files;
    files.emplace_back(reid, name.value());
}

}  // namespace rig::log
