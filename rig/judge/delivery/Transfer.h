#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "rig/result/Result.h"

namespace rig::judge {

/// An event's identifier and a file's name.
using FileName = std::pair<std::string, std::string>;

/// The last that the log tells of a file that the harness asked for.
struct Transfer {
    enum class State { Asked, Failed, Complete };

    State state = State::Asked;
    bool hasFailed = false;             // at some time
    bool isNewHash = false;             // it was complete in answer to the request for a new hash
    std::optional<std::string> length;  // as FILE_COMPLETE announces them
    std::optional<std::string> hash;
    std::optional<std::int64_t> time;  // of FILE_COMPLETE, microseconds
    result::Evidence evidence;
    std::uint64_t order = 0;  // of the transfers of a run by their last message
};

using Transfers = std::map<FileName, Transfer>;

}  // namespace rig::judge
