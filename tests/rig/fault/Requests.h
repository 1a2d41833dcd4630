#pragma once

#include <string>
#include <vector>

#include "rig/fault/Fault.h"

/// A message of an export, as the harness prints it.
struct Request {
    int dialect;
    std::string name;
    std::string text;
};

/// Every message of an export in both dialects.
const std::vector<Request>& Requests();

/// What the fault makes of the message, where the DVR has another event.
rig::fault::Script ScriptOf(const rig::fault::Fault& fault, const Request& request, const std::string& value);

/// All that a script sends.
std::string SentBy(const rig::fault::Script& script);

/// The frame's text, without its prefix of one or two bytes.
std::string TextOf(const std::string& frame);
