#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "rig/campaign/Cases.h"
#include "rig/campaign/Outcome.h"
#include "rig/campaign/execution/Hooks.h"
#include "rig/campaign/execution/Watch.h"
#include "rig/judge/delivery/DeliveryPlace.h"

namespace CLI {
class App;
}

namespace rig::campaign {

/// What the command line of `velloran-rig run` says, with its defaults.
struct RunOptions {
    Selection selection;
    bool isWhole = false;  // whatever the environment says of parts
    std::string search;    // how long to search, as ParseSearchLimit reads it; empty: the cases are chosen
    bool listCases = false;
    std::string velloran;            // command; empty: the harness next to this program, or on PATH
    std::string log;                 // file to follow; empty: the command's standard output
    std::string stop;                // command; empty: SIGINT
    bool isDirect = false;           // without a proxy
    std::optional<std::string> dvr;  // command; empty: the simulated DVR; none: wait for a recorder
    HookCommands hooks;
    Patience patience;
    std::optional<double> linger;       // seconds; none: as long as -d asks
    std::optional<double> maxReaction;  // milliseconds
    bool strict = false;                // a warning fails
    std::string known;                  // list of known failures
    int repeat = 1;
    std::optional<std::uint32_t> seed;
    std::string note;
    std::string resume;  // folder of a campaign to go on with; empty: begin one
    std::string out;     // folder; empty: one named after the time
    bool capture = false;
    judge::DeliveryOptions delivery;
};

/// Adds the subcommand `run`. When the command line asks for it, parsing runs it and leaves its exit status
/// in `status`, which must live until then.
void AddRunCommand(CLI::App& app, int& status);

/// @return the options that these words of a command line stand for, those after "run". Throws
/// std::runtime_error if they do not.
RunOptions ParseRun(std::vector<std::string> words);

/// Plans the campaign that the options describe, makes its folder and runs it. Throws std::runtime_error when
/// the options cannot be followed or evidence cannot be written.
Outcome PlanAndRun(const RunOptions& options);

/// Runs a campaign: progress on standard output, evidence in a folder; if something goes wrong, one line on
/// standard error.
/// @return the exit status: 0 all pass, 1 a case failed or timed out, 2 inconclusive, 3 environment, 64
///         usage, or evidence that cannot be written, 130 interrupted
int RunCampaign(const RunOptions& options);

}  // namespace rig::campaign
