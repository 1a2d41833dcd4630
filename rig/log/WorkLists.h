#pragma once

#include <deque>
#include <string>
#include <utility>

#include "rig/judge/Run.h"

namespace pugi {
class xml_node;
}  // namespace pugi

namespace rig::judge {

/// The harness's lists of what it has yet to ask for, rebuilt from what the DVR sent.
class WorkLists {
 public:
    using File = std::pair<std::string, std::string>;  // event identifier, name

    std::deque<std::string> events;
    std::deque<File> files;

    /// Takes the identifiers of EVENT_LIST. Adds what is wrong with them to the facts, as do those below.
    void TakeEventList(const pugi::xml_node& message, const Place& place, Run& facts);

    /// Takes the files of the one description in EVENT.
    void TakeEvent(const pugi::xml_node& message, const Place& place, Run& facts);

    /// Takes the files of all descriptions in XML.
    void TakeXml(const pugi::xml_node& message, const Place& place, Run& facts);

 private:
    std::string TakeDescription(const std::string& text, const std::string& reid, const Place& place,
                                Run& facts);
    void TakeFile(const pugi::xml_node& file, const std::string& reid, const Place& place, Run& facts);
};

}  // namespace rig::judge
