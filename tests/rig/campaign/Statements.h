#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "rig/log/Statement.h"

namespace rig::campaign {

/// Statements of a log, by their time in milliseconds and their text.
using Statements = std::vector<std::pair<std::int64_t, std::string>>;

/// Passes them to something that takes them.
template <typename Taker>
void Feed(Taker&& taker, const Statements& statements) {
    for (const auto& [milliseconds, text] : statements) {
        log::Statement statement = log::StatementOf(text);
        statement.time = milliseconds * 1000;
        taker(statement);
    }
}

}  // namespace rig::campaign
