#pragma once

#include <string>
#include <vector>

#include "rig/dvr/wire/Message.h"
#include "rig/log/Statement.h"

namespace rig::dvr {

// The harness's log names the subject of a request (an event, a file, a duration) in one of several ways.

/// @return the subject of the requests that the statement confirms as sent; empty if it confirms none
std::string SubjectConfirmedBy(const log::Statement& statement);

/// @return the ways in which the log may name the subject of a message of the harness: event and file for a
/// GET_FILE, the event for a message about an event, the duration for DONE; empty if it would name nothing
std::vector<std::string> SubjectsOf(const Message& message);

}  // namespace rig::dvr
