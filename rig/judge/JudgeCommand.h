#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rig/judge/delivery/DeliveryPlace.h"

namespace CLI {
class App;
}

namespace rig::judge {

/// What the command line of `velloran-rig judge` says, with its defaults.
struct JudgeOptions {
    std::vector<std::string> logs;  // "-" is standard input
    bool follow = false;
    bool timeline = false;
    bool messages = false;              // print what both sides sent, and judge nothing
    double patience = 3;                // seconds
    std::optional<double> maxReaction;  // milliseconds
    bool strict = false;                // a warning fails
    std::string known;                  // list of known failures; empty if not given
    std::string json;                   // files; empty if not given
    std::string junit;
    std::string tap;
    std::string html;
    DeliveryOptions delivery;
    std::optional<std::string> proxy;  // its log
    bool listChecks = false;           // and read no log
    std::string format = "text";       // of that list, or "markdown"
};

/// Adds the subcommand `judge`. When the command line asks for it, parsing runs it and leaves its exit status
/// in `status`, which must live until then.
void AddJudgeCommand(CLI::App& app, int& status);

/// Reads the logs, prints the report on standard output, writes the files asked for; if something goes wrong,
/// one line on standard error.
/// @return the exit status: 0 all pass, 1 a check failed, 2 inconclusive, 3 environment, 64 usage,
///         66 a log that cannot be read or is not the harness's
int RunJudge(const JudgeOptions& options);

}  // namespace rig::judge
