#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace rig::merge {

/// What the command line of `velloran-rig merge` says.
struct MergeOptions {
    std::vector<std::string> parts;  // folders
    std::string out;                 // folder
};

/// Adds the subcommand `merge`. When the command line asks for it, parsing runs it and leaves its exit status
/// in `status`, which must live until then.
void AddMergeCommand(CLI::App& app, int& status);

/// Makes one campaign of several: what they do not have in common, how it came out, on standard output; if
/// something goes wrong, one line on standard error, and no folder.
/// @return the exit status: as of a campaign (0, 1, 2, 3, 130), 64 usage, or a folder that cannot be written,
/// 66 a
///         folder that cannot be merged
int RunMerge(const MergeOptions& options);

}  // namespace rig::merge
