#include "rig/judge/WorkLists.h"

#include <pugixml.hpp>
#include <set>

namespace rig::judge {

using report::Evidence;

void WorkLists::TakeEventList(const pugi::xml_node& message, const Evidence& evidence, Run& facts) {
    std::set<std::string> listed;
    for (const pugi::xml_node event : message.child("events").children()) {
        const std::string reid = event.text().get();
        if (reid.empty()) {
            continue;  // the harness says so
        }
        if (!listed.insert(reid).second) {
            facts.doubledEvents.Add(evidence);
        }
        events.push_back(reid);
    }
}

void WorkLists::TakeEvent(const pugi::xml_node& message, const Evidence& evidence, Run& facts) {
    const std::size_t before = files.size();
    TakeDescription(message.child("xmlFile").text().get(), message.attribute("reid").value(), evidence,
                    facts);
    facts.files += files.size() - before;
    facts.hasLargeEvent = facts.hasLargeEvent || files.size() >= before + 2;
}

void WorkLists::TakeXml(const pugi::xml_node& message, const Evidence& evidence, Run& facts) {
    const std::size_t before = files.size();
    const bool isFirst = events.empty();
    const pugi::xml_node container = message.child("xmlFile");
    for (const pugi::xml_node description : container.children("string")) {
        const std::string text = description.text().get();
        if (text.empty()) {
            facts.noEvent.Add(evidence);
        }
        TakeDescription(text, "", evidence, facts);
    }
    if (isFirst && std::set<std::string>(events.begin(), events.end()).size() < events.size()) {
        facts.doubledEvents.Add(evidence);
    }
    if (!container.child("string")) {
        facts.noFiles.Add(evidence);
    }
    facts.files += files.size() - before;
}

void WorkLists::TakeDescription(const std::string& text, const std::string& reid, const Evidence& evidence,
                                Run& facts) {
    pugi::xml_document description;
    if (!description.load_string(text.c_str())) {
        return;  // the harness says so
    }
    const pugi::xml_node event = description.child("recording-event");
    if (!event) {
        facts.noEvent.Add(evidence);
        return;
    }
    const std::string name = reid.empty() ? event.attribute("reid").value() : reid;
    if (name.empty()) {
        return;
    }
    if (reid.empty()) {
        events.push_back(name);
    }
    const std::size_t before = files.size();
    const pugi::xml_node video = event.child("video");
    if (const pugi::xml_node metadata = video.child("metadata")) {
        TakeFile(metadata, name, evidence, facts);
    }
    for (const pugi::xml_node stream : video.child("streams").children()) {
        for (const pugi::xml_node file : stream.children()) {
            TakeFile(file, name, evidence, facts);
        }
    }
    if (files.size() == before) {
        facts.noFiles.Add(evidence);
    }
}

void WorkLists::TakeFile(const pugi::xml_node& file, const std::string& reid, const Evidence& evidence,
                         Run& facts) {
    if (!file.attribute("name")) {
        facts.namelessFiles.Add(evidence);
    }
    files.emplace_back(reid, file.attribute("name").value());
}

}  // namespace rig::judge
