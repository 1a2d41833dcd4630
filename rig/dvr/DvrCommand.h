#pragma once

#include <string>

namespace CLI {
class App;
}

namespace rig {

/// What the command line of `velloran-rig dvr` says, with its defaults.
struct DvrOptions {
    int protocol = 1;  // dialect, 1 or 2; 1 is also the harness's default
    std::string host = "127.0.0.1";
    int port = 5001;
    std::string recordings;  // folder; only heeded when given
    bool hasRecordings = false;
    double wait = 10;         // seconds
    double timeout = 30;      // seconds
    double frameTimeout = 5;  // seconds
    int transferTime = 200;   // milliseconds
};

/// Adds the subcommand `dvr`. When the command line asks for it, parsing runs it and leaves its exit status
/// in `status`, which must live until then.
void AddDvrCommand(CLI::App& app, int& status);

/// Plays a DVR to its end: transcript on standard output; where something goes wrong, one line on standard
/// error.
/// @return the exit status (ExitStatus)
int RunDvr(const DvrOptions& options);

}  // namespace rig
