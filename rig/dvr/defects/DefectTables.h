#pragma once

#include <string>
#include <vector>

#include "rig/dvr/defects/Defect.h"

namespace rig::dvr {

// The tables of defects, by subject: each row with the function that does what it says. To add a defect, add
// its function and its row.
const std::vector<DefectKind>& AttributeDefects();
const std::vector<DefectKind>& AnswerDefects();
const std::vector<DefectKind>& UnaskedDefects();  // messages that nobody asked for
const std::vector<DefectKind>& DocumentDefects();
const std::vector<DefectKind>& CopyDefects();  // delivered files
const std::vector<DefectKind>& WireDefects();  // frames and connections

// What may follow the name of a defect, short for the tables.
constexpr DefectValue None = DefectValue::None;
constexpr DefectValue Text = DefectValue::Text;
constexpr DefectValue Count = DefectValue::Count;
constexpr DefectValue Place = DefectValue::Place;

/// @return the messages of a DVR with that attribute or element, each once
std::vector<const char*> MessagesWith(const char* field);

// What several defects do. Each returns whether there was something to change: a defect that had nothing to
// change waits for the next message.
bool Replace(Outgoing& outgoing, const char* attribute, const std::string& value);
bool Remove(Outgoing& outgoing, const char* attribute);
bool ExchangeCase(Outgoing& outgoing, const char* attribute);

/// @return a message about the same event, in the same dialect
Message Sibling(const Message& message, const char* name);

/// @return the files of an event; none if there is no such event
std::vector<std::string> FilesOf(const Recordings& recordings, const std::string& event);

}  // namespace rig::dvr
