#pragma once

#include <string>

namespace CLI {
class App;
}

namespace rig::diff {

/// What the command line of `velloran-rig diff` says, with its defaults.
struct DiffOptions {
    std::string before;  // folders of two campaigns
    std::string after;
    bool all = false;
    std::string json;  // files; empty if not given
    std::string html;
};

/// Adds the subcommand `diff`. When the command line asks for it, parsing runs it and leaves its exit status
/// in `status`, which must live until then.
void AddDiffCommand(CLI::App& app, int& status);

/// Compares two campaigns: prints what changed on standard output and writes the files asked for; if
/// something goes wrong, one line on standard error.
/// @return the exit status: 0 nothing got worse, 1 something did, 64 usage, or a report that cannot be
///         written, 66 a folder that is not a campaign's
int RunDiff(const DiffOptions& options);

}  // namespace rig::diff
