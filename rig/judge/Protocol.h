#pragma once

#include <string>

#include "rig/judge/Run.h"

namespace rig::judge {

/// @return what the DVR must answer to a request with a fault; empty if it need not answer
std::string AnswerTo(const std::string& request, Fault fault, int protocol);

/// @return whether the DVR may send the message in the dialect
bool Knows(int protocol, const std::string& message);

/// @return whether the message reports a fault
bool IsReport(const std::string& message);

/// @return an identifier or a name as the harness damages it: without its first three characters
std::string Damaged(const std::string& text);

}  // namespace rig::judge
