#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "rig/campaign/execution/Hooks.h"
#include "rig/campaign/execution/Watch.h"
#include "rig/judge/KnownFailures.h"
#include "rig/judge/checks/Checks.h"

namespace rig::campaign {

/// How the campaign reaches harness and DVR, and what it asks of them; the same for all cases.
struct Rig {
    std::string harness;             // command, to which the switches are appended
    std::string proxy;               // command that stands between harness and DVR
    bool isDirect = false;           // nothing stands there, unless it must
    std::string log;                 // file that the log goes to; empty: the command's standard output
    std::string stop;                // command that interrupts the harness; empty: SIGINT
    std::optional<std::string> dvr;  // command with {protocol} and {seed}; none: someone else starts the DVR
    std::uint32_t seed = 0;
    HookCommands hooks;
    Patience patience;
    std::optional<double>
        linger;  // seconds to keep watching after the end of a dialogue; none: as long as -d asks
    judge::Limits limits;
    judge::KnownFailures known;
    bool capture = false;
};

}  // namespace rig::campaign
