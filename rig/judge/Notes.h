#pragma once

#include <string>

#include "rig/log/RunReader.h"

// What a report shows of the DVR's message itself, where the harness's own line says only what it thinks of
// it.

namespace rig::judge {

/// @return the beginning of the message, printable
std::string Shown(const log::Message& message);

/// @return what a statement about the last message leaves out: the message, or what is wrong in it; empty if
/// the statement says it all
std::string NoteOn(const log::Statement& statement, const log::Message& message);

/// What may be wrong with a description of an event.
enum class DescriptionFault { NotXml, NoEvent, NoFiles, NamelessFile, NoReid, EmptyReid, EmptyName };

/// @return the first description of the message with this fault, printable; empty if it has none
std::string ShownDescription(const log::Message& message, DescriptionFault fault);

/// @return under which elements EVENT_LIST lists its events, where the harness does not find them:
/// "events/string instead of events/event"; empty if it lists nothing
std::string ListedElsewhere(const log::Message& message);

}  // namespace rig::judge
