#pragma once

#include <string_view>

#include "rig/log/Statement.h"

namespace rig::log {

/// Reads time, level and text from a line of our own logger, where everything has its fixed place. Most logs
/// consist of such lines; for others there is a way that takes longer.
/// "2026-11-20T14:03:07.123456Z velloran 16 velloran:212 Sending DONE"
/// @return whether the line is one
bool ReadOwnLine(std::string_view line, Statement& statement);

}  // namespace rig::log
