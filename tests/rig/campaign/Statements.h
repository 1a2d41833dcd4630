#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "rig/log/LogLine.h"

namespace rig::campaign {

/// Statements of a log, by their time in milliseconds and their text.
using Statements = std::vector<std::pair<std::int64_t, std::string>>;

/// Passes them to something that takes log lines.
template <typename Taker>
void Feed(Taker&& taker, const Statements& statements) {
    for (const auto& [milliseconds, text] : statements) {
        log::LogLine line;
        line.text = text;
        line.time = milliseconds * 1000;
        taker(line);
    }
}

}  // namespace rig::campaign
