#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace pugi {
class xml_node;
}  // namespace pugi

namespace rig::log {

using File = std::pair<std::string, std::string>;  // event identifier, name

/// What a message says about events and files, and what is wrong with that.
struct Listed {
    std::size_t files = 0;             // that it adds to the list
    bool hasLargeEvent = false;        // an event of at least two files
    std::vector<std::string> doubled;  // identifiers that it lists more than once
    std::vector<File> doubledFiles;    // that one description names more than once
    // How many of its descriptions are so:
    std::size_t notWellFormed = 0;
    std::size_t noEvent = 0;        // empty, or not of an event
    std::size_t noFiles = 0;        // name no file
    std::size_t namelessFiles = 0;  // files in them without `name`
    std::size_t emptyReids = 0;     // of 1.0, with an empty `reid`
    std::size_t emptyNames = 0;     // files in them with an empty `name`
    std::size_t notFiles = 0;       // what streams hold besides elements: comments, text
    // Of the list itself:
    std::size_t emptyEvents = 0;  // elements of EVENT_LIST without an identifier
    std::size_t notEvents = 0;    // what EVENT_LIST holds after its first event besides elements
    bool hasSecond = false;       // another `events` or `xmlFile`, which the harness does not read
    bool noDescriptions = false;  // XML without `xmlFile`
    bool isEmpty = false;         // XML that has `xmlFile`, and nothing in it
};

/// The harness's lists of what it still has to ask for, rebuilt from what the DVR sent.
class WorkLists {
 public:
    using File = log::File;

    std::deque<std::string> events;
    std::deque<File> files;

    /// Adds events and files of another list.
    void Append(const WorkLists& more);

    /// Takes the identifiers of EVENT_LIST.
    Listed TakeEventList(const pugi::xml_node& message);

    /// Takes the files of the one description in EVENT.
    Listed TakeEvent(const pugi::xml_node& message);

    /// Takes the files of all descriptions in XML.
    Listed TakeXml(const pugi::xml_node& message);

 private:
    std::string TakeDescription(const char* text, const std::string& reid, Listed& listed);
    void TakeFile(const pugi::xml_node& file, const std::string& reid, Listed& listed);
};

}  // namespace rig::log
