#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace rig::campaign {

/// The option that names a part.
inline constexpr const char* kShardOption = "--shard";

/// Which of several parts of a campaign to run, where each runs on its own.
struct Shard {
    std::uint32_t index = 1;  // from 1
    std::uint32_t total = 1;
    std::string from;  // where it was taken from: "--shard", or the names of two variables

    /// @return "part 2 of 3"
    std::string Words() const;
};

/// @return the part that a text such as "2/3" names; nothing if it names none
std::optional<Shard> ParseShard(const std::string& text);

/// What a test runner, or a scheduler, says in its environment.
struct ShardChoice {
    std::optional<Shard> shard;
    std::vector<std::string> ignored;  // variables that are not taken, and why, each in a line
};

/// @param variable  gives the value of a variable, null if there is none
/// @return the part of the first runner whose two variables are both there and sound
ShardChoice ShardInEnvironment(const std::function<const char*(const char*)>& variable);

}  // namespace rig::campaign
