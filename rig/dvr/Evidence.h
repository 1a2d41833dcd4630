#pragma once

#include <string>
#include <vector>

#include "rig/dvr/Message.h"

namespace rig {

/// @return the name of the message that the harness sends next when it logs this text; empty where the text
/// does not tell. A later text of the same answer knows better than an earlier one.
std::string NameAnnouncedBy(const std::string& text);

/// @return the name of the message that the harness answers this message of the DVR with where its log says
/// nothing; empty where it would say something
std::string NameAnswering(const std::string& message);

/// @return what the text says about the subject of the message that the harness sends next; empty where it
/// says nothing
std::string SubjectAnnouncedBy(const std::string& text);

/// @return the subject of the requests that this text confirms to have been sent; empty where it confirms
/// none
std::string SubjectConfirmedBy(const std::string& text);

/// The harness's log names what a request is about in one of several ways.
/// @return these for a message of the harness: of a GET_FILE event and file, of a message about an event the
/// event, of DONE the duration; empty where it is about nothing that the log would name
std::vector<std::string> SubjectsOf(const Message& message);

}  // namespace rig
