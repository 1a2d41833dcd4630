#pragma once

#include <string>
#include <vector>

#include "rig/dvr/wire/Message.h"

namespace rig::dvr {

/// @return the name of the message that the harness sends next when it logs this text; empty if the text does
/// not say. Of several texts about the same answer, the later one is right.
std::string NameAnnouncedBy(const std::string& text);

/// @return the name of the message with which the harness answers this message of the DVR without logging
/// anything; empty if it would log something
std::string NameAnswering(const std::string& message);

/// @return what the text says about the subject of the message that the harness sends next; empty if nothing
std::string SubjectAnnouncedBy(const std::string& text);

/// @return the subject of the requests that this text confirms as sent; empty if it confirms none
std::string SubjectConfirmedBy(const std::string& text);

/// The harness's log names the subject of a request in one of several ways.
/// @return these for a message of the harness: event and file for a GET_FILE, the event for a message about
/// an event, the duration for DONE; empty if the log would name nothing
std::vector<std::string> SubjectsOf(const Message& message);

}  // namespace rig::dvr
