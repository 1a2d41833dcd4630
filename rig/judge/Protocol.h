#pragma once

#include <string>

#include "rig/judge/Run.h"

namespace rig::judge {

/// @return what the DVR must answer to a request with a fault; empty if it need not answer
std::string AnswerTo(const std::string& request, Fault fault, int protocol);

/// @return whether the message reports a fault
bool IsReport(const std::string& message);

}  // namespace rig::judge
