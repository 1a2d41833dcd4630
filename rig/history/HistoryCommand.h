#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace rig::history {

/// What the command line of `velloran-rig history` says, with its defaults.
struct HistoryOptions {
    std::vector<std::string> folders;  // of campaigns
    std::string order = "time";        // or "note"
    std::string json;                  // files; empty if not given
    std::string html;
};

/// Adds the subcommand `history`. When the command line asks for it, parsing runs it and leaves its exit
/// status in `status`, which must live until then.
void AddHistoryCommand(CLI::App& app, int& status);

/// Shows the course of many campaigns: prints it on standard output and writes the files asked for. Each
/// folder that does not count has a line on standard error, and stands in what is written.
/// @return the exit status: 0 done, 64 usage, or a report that cannot be written, 66 a folder that is not a
///         campaign's; if none is, nothing is written
int RunHistory(const HistoryOptions& options);

}  // namespace rig::history
